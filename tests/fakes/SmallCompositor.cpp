// SPDX-License-Identifier: MIT
// A Wayland compositor that shows nothing and has a clipboard. Its arguments name the interfaces it
// offers. Commands on standard input make it copy, as other programs would with the faults that the
// words of the command name; on standard output it says what it is asked.

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <data-control-server-header.h>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>
#include <wayland-server.h>

using namespace std::chrono_literals;

namespace
{

using Words = std::vector<std::string>;

Words split(const std::string &line)
{
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

bool has(const Words &words, const std::string &word)
{
    return std::find(words.cbegin(), words.cend(), word) != words.cend();
}

std::optional<std::string> value(const Words &words, const std::string &name)
{
    for (const std::string &word : words) {
        if (word.starts_with(name + '='))
            return word.substr(name.size() + 1);
    }
    return {};
}

void say(const std::string &line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// What the clipboard holds: a program's source, or what a command has described.
struct Copy {
    Words faults;
    std::string text;
    std::vector<std::string> types;
    wl_resource *source = nullptr;
};

/// Runs on a thread of its own, as another program would.
void write(const Copy &copy, const std::string &type, int pipe)
{
    const auto give = [&](const std::string &piece) {
        const bool isTaken = ::write(pipe, piece.data(), piece.size()) >= 0;
        if (!isTaken)
            say("hurt");
        return isTaken;
    };
    if (has(copy.faults, "late"))
        std::this_thread::sleep_for(450ms);
    if (type == "x-kde-passwordManagerHint")
        give("secret");
    else if (has(copy.faults, "stalls"))
        give(copy.text.substr(0, copy.text.size() / 2));
    else if (!has(copy.faults, "silent") && !has(copy.faults, "dies"))
        give(copy.text);
    while (has(copy.faults, "endless") && give(std::string(65'536, 'x'))) {}
    while (has(copy.faults, "drips") && give("x"))
        std::this_thread::sleep_for(200ms);
    if (has(copy.faults, "silent") || has(copy.faults, "stalls"))
        pause();
    close(pipe);
    say("answered");
}

class Compositor
{
public:
    explicit Compositor(const Words &arguments);
    int run();

private:
    struct Requests;

    template <typename Data>
    static Data &of(wl_resource *resource)
    {
        return *static_cast<Data *>(wl_resource_get_user_data(resource));
    }
    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    enum class Name { ext, zwlr };
    template <Name name>
    static void bindDataControl(wl_client *client, void *compositor, uint32_t, uint32_t id);
    void offerSeat();
    void obey(const Words &command);
    void copy(const Words &faults);
    void replace(std::shared_ptr<Copy> copy);
    wl_resource *introduce(wl_resource *device, const std::shared_ptr<Copy> &copy);
    void mark();
    void paste() const;

    wl_display *m_display = wl_display_create();
    wl_interface m_zwlr = ext_data_control_manager_v1_interface;
    wl_global *m_seat = nullptr;
    std::vector<wl_resource *> m_devices;
    std::shared_ptr<Copy> m_copy;
};

struct Compositor::Requests {
    static void receive(wl_client *, wl_resource *offer, const char *type, int32_t pipe)
    {
        const auto copy = of<std::shared_ptr<Copy>>(offer);
        say(std::string("asked for ") + type);
        if (!copy->source)
            return std::thread(write, *copy, std::string(type), pipe).detach();
        ext_data_control_source_v1_send_send(copy->source, type, pipe);
        close(pipe);
    }
    static constexpr struct ext_data_control_offer_v1_interface offer = {receive, destroy};

    static void offerType(wl_client *, wl_resource *source, const char *type)
    {
        of<std::shared_ptr<Copy>>(source)->types.emplace_back(type);
    }
    static constexpr struct ext_data_control_source_v1_interface source = {offerType, destroy};
    static void sourceGone(wl_resource *source)
    {
        auto *copy = &of<std::shared_ptr<Copy>>(source);
        (*copy)->source = nullptr;
        delete copy;
    }

    static void setSelection(wl_client *, wl_resource *device, wl_resource *source)
    {
        of<Compositor>(device).replace(source ? of<std::shared_ptr<Copy>>(source) : nullptr);
    }
    static constexpr struct ext_data_control_device_v1_interface device = {setSelection, destroy};
    static void deviceGone(wl_resource *device)
    {
        std::erase(of<Compositor>(device).m_devices, device);
    }

    static void createSource(wl_client *client, wl_resource *, uint32_t id)
    {
        auto *resource = wl_resource_create(client, &ext_data_control_source_v1_interface, 1, id);
        auto copy = std::make_shared<Copy>();
        copy->source = resource;
        wl_resource_set_implementation(resource, &source, new std::shared_ptr<Copy>(copy),
                                       sourceGone);
    }
    static void createDevice(wl_client *client, wl_resource *manager, uint32_t id, wl_resource *)
    {
        auto &compositor = of<Compositor>(manager);
        auto *resource = wl_resource_create(client, &ext_data_control_device_v1_interface, 1, id);
        wl_resource_set_implementation(resource, &device, &compositor, deviceGone);
        compositor.m_devices.push_back(resource);
        ext_data_control_device_v1_send_selection(
            resource, compositor.introduce(resource, compositor.m_copy));
        say("watched");
    }
    static constexpr struct ext_data_control_manager_v1_interface manager = {createSource,
                                                                             createDevice, destroy};
};

Compositor::Compositor(const Words &arguments)
{
    m_zwlr.name = "zwlr_data_control_manager_v1";
    if (wl_display_add_socket(m_display, "small") < 0)
        std::exit(1);
    if (has(arguments, "zwlr")) // first, so that the order of the two does not choose
        wl_global_create(m_display, &m_zwlr, 1, this, bindDataControl<Name::zwlr>);
    if (has(arguments, "ext"))
        wl_global_create(m_display, &ext_data_control_manager_v1_interface, 1, this,
                         bindDataControl<Name::ext>);
    if (!has(arguments, "seatless"))
        offerSeat();
    const auto commandsReadable = [](int, uint32_t, void *data) {
        std::array<char, 4096> lines = {};
        const ssize_t size = read(STDIN_FILENO, lines.data(), lines.size());
        std::istringstream stream(std::string(lines.data(), size_t(std::max<ssize_t>(size, 0))));
        for (std::string line; std::getline(stream, line);)
            static_cast<Compositor *>(data)->obey(split(line));
        if (size <= 0)
            std::exit(0);
        return 0;
    };
    wl_event_loop_add_fd(wl_display_get_event_loop(m_display), STDIN_FILENO, WL_EVENT_READABLE,
                         commandsReadable, this);
}

int Compositor::run()
{
    say("ready");
    wl_display_run(m_display);
    return 0;
}

template <Compositor::Name name>
void Compositor::bindDataControl(wl_client *client, void *compositor, uint32_t, uint32_t id)
{
    auto *manager = wl_resource_create(client, &ext_data_control_manager_v1_interface, 1, id);
    wl_resource_set_implementation(manager, &Requests::manager, compositor, nullptr);
    say(name == Name::ext ? "bound ext" : "bound zwlr");
}

void Compositor::offerSeat()
{
    const auto bound = [](wl_client *client, void *, uint32_t version, uint32_t id) {
        auto *seat = wl_resource_create(client, &wl_seat_interface, int(version), id);
        wl_resource_set_implementation(seat, nullptr, nullptr, nullptr);
    };
    m_seat = wl_global_create(m_display, &wl_seat_interface, 1, this, bound);
}

void Compositor::obey(const Words &command)
{
    if (has(command, "copy"))
        copy(command);
    else if (has(command, "clear"))
        replace(nullptr);
    else if (has(command, "mark"))
        mark();
    else if (has(command, "paste"))
        paste();
    else if (has(command, "add-seat"))
        offerSeat();
    else if (has(command, "remove-seat"))
        wl_global_destroy(m_seat);
    else if (has(command, "finish"))
        for (wl_resource *device : m_devices)
            ext_data_control_device_v1_send_finished(device);
}

void Compositor::copy(const Words &faults)
{
    const int copies = std::stoi(value(faults, "copies").value_or("1"));
    for (int i = 1; i <= copies; ++i) {
        auto copy = std::make_shared<Copy>();
        copy->faults = faults;
        copy->text = value(faults, "text").value_or("https://owner.example/" + std::to_string(i));
        copy->text.resize(
            std::stoul(value(faults, "bytes").value_or(std::to_string(copy->text.size()))), 'x');
        if (has(faults, "thousand-types"))
            copy->types.assign(1000, "text/html");
        copy->types.insert(copy->types.begin(),
                           value(faults, "type").value_or("text/plain;charset=utf-8"));
        if (has(faults, "secret"))
            copy->types.emplace_back("x-kde-passwordManagerHint");
        replace(copy);
    }
}

void Compositor::replace(std::shared_ptr<Copy> copy)
{
    if (m_copy && m_copy->source)
        ext_data_control_source_v1_send_cancelled(m_copy->source);
    m_copy = std::move(copy);
    for (wl_resource *device : m_devices)
        ext_data_control_device_v1_send_selection(device, introduce(device, m_copy));
}

/// An offer whose owner has changed meanwhile still gives what it was made for.
wl_resource *Compositor::introduce(wl_resource *device, const std::shared_ptr<Copy> &copy)
{
    if (!copy)
        return nullptr;
    auto *offer = wl_resource_create(wl_resource_get_client(device),
                                     &ext_data_control_offer_v1_interface, 1, 0);
    const auto gone = [](wl_resource *resource) { delete &of<std::shared_ptr<Copy>>(resource); };
    wl_resource_set_implementation(offer, &Requests::offer, new std::shared_ptr<Copy>(copy), gone);
    ext_data_control_device_v1_send_data_offer(device, offer);
    for (const std::string &type : copy->types)
        ext_data_control_offer_v1_send_offer(offer, type.c_str());
    return offer;
}

void Compositor::mark()
{
    const auto marked = std::make_shared<Copy>(Copy{{}, "marked", {"text/plain"}});
    for (wl_resource *device : m_devices)
        ext_data_control_device_v1_send_primary_selection(device, introduce(device, marked));
}

/// Says how many bytes it was given.
void Compositor::paste() const
{
    std::array<int, 2> ends;
    if (!m_copy || !m_copy->source || pipe(ends.data()) != 0)
        return say("nothing to paste");
    ext_data_control_source_v1_send_send(m_copy->source, "text/plain", ends[1]);
    close(ends[1]);
    std::thread([pipe = ends[0]] {
        std::array<char, 4096> piece;
        size_t total = 0;
        for (ssize_t size = 0; (size = read(pipe, piece.data(), piece.size())) > 0;)
            total += size_t(size);
        close(pipe);
        say("pasted " + std::to_string(total));
    }).detach();
}

} // namespace

int main(int argc, char *argv[])
{
    std::signal(SIGPIPE, SIG_IGN);
    return Compositor(Words(argv + 1, argv + argc)).run();
}
