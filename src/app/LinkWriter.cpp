// SPDX-License-Identifier: MIT
#include "LinkWriter.h"

#include "Clock.h"
#include "LinkJson.h"
#include "LinksAdaptor.h"
#include "ModelContainer.h"
#include "ModelContext.h"
#include "SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// The program may just be starting and wait for the store.
constexpr std::chrono::milliseconds answerLimit = 30s;
/// How long to wait for another command line to let go of the store.
constexpr auto lockLimit = 5s;
constexpr auto lockAttempt = 100ms; ///< then look whether the program has started
/// How long to keep the store at a time, and how long to leave it to others.
constexpr auto holdLimit = 1s;
constexpr auto holdPause = 50ms;
/// What a call may hold keeps the store, and whoever else wants it, that long. (Imports, which
/// take less time for each, come in the largest calls.)
constexpr int linksPerCall = 500;
constexpr qsizetype bytesPerCall = 1 << 20;
static_assert(linksPerCall <= LinksAdaptor::linksPerCall);

Unexpected<CommandError> unusable(const StoreError &error)
{
    return Unexpected{CommandError{ExitCode::unusable, description(error)}};
}

LinkWriter::Result resultOf(const Expected<void, StoreError> &done)
{
    return done ? LinkWriter::Result() : unusable(done.error());
}

/// Writes into the store itself.
class StoreWriter final : public LinkWriter
{
public:
    StoreWriter(std::unique_ptr<ModelContainer> container, Clock &clock)
        : m_container(std::move(container))
        , m_clock(clock)
    {
    }

    Expected<Addition, CommandError> add(const QString &address) override
    {
        const auto added = LinkIntake(context()).add(address, m_clock.now());
        if (!added)
            return unusable(added.error());
        if (!*added)
            return Addition{description(added->error()), {}};
        return Addition{{}, **added};
    }
    Result setTitle(const LinkId &id, const QString &title) override
    {
        context().setTitle(id, title);
        return written();
    }
    Result remove(const QList<LinkId> &ids) override { return resultOf(context().remove(ids)); }
    Result hideExported(const QList<LinkId> &ids) override
    {
        const Result hidden = resultOf(context().hideExported(ids));
        return hidden ? written() : hidden;
    }
    Expected<IntakeCounts, CommandError> import(const QList<CapturedLink> &links) override
    {
        const auto counts = LinkIntake(context()).import(links);
        context().announceChanges(); // nobody listens; they would only grow in number
        if (!counts)
            return unusable(counts.error());
        return *counts;
    }

private:
    /// What waits in memory for better times would go with this process.
    Result written()
    {
        const auto &reason = context().unsavedReason();
        return reason ? unusable(*reason) : Result();
    }
    ModelContext &context() { return m_container->mainContext(); }

    std::unique_ptr<ModelContainer> m_container;
    Clock &m_clock;
};

/// Has the running program write.
class ProgramWriter final : public LinkWriter
{
public:
    static bool isThere()
    {
        const QDBusConnection bus = QDBusConnection::sessionBus();
        return bus.isConnected()
            && bus.interface()->isServiceRegistered(SingleInstance::serviceName).value();
    }

    Expected<Addition, CommandError> add(const QString &address) override
    {
        const auto answer = call(u"Add"_s, {address});
        if (!answer)
            return Unexpected{answer.error()};
        return Addition{answer->value(0).toString(), {}};
    }
    Result setTitle(const LinkId &id, const QString &title) override
    {
        return done(call(u"SetTitle"_s, {id.toString(), title}));
    }
    Result remove(const QList<LinkId> &ids) override { return callForEach(u"Remove"_s, ids); }
    Result hideExported(const QList<LinkId> &ids) override
    {
        return callForEach(u"HideExported"_s, ids);
    }
    Expected<IntakeCounts, CommandError> import(const QList<CapturedLink> &links) override
    {
        IntakeCounts counts;
        QByteArray array;
        qsizetype size = 0;
        for (const CapturedLink &link : links) {
            const QByteArray object = jsonOf(link);
            if (bytesPerCall + object.size() < LinksAdaptor::bytesPerCall) {
                array.append(array.isEmpty() ? '[' : ',').append(object);
                ++size;
            } else {
                counts.note(Refusal::noWebAddress); // megabytes of anything
            }
            const bool isFull = size == LinksAdaptor::linksPerCall || array.size() > bytesPerCall;
            if (array.isEmpty() || (!isFull && &link != &links.last()))
                continue;
            const auto answer = call(u"Import"_s, {array.append(']')});
            if (!answer)
                return Unexpected{answer.error()};
            counts += {answer->value(0).toLongLong(), answer->value(1).toLongLong(),
                       answer->value(2).toLongLong(), answer->value(3).toLongLong()};
            array.clear();
            size = 0;
        }
        return counts;
    }

private:
    using Answer = Expected<QVariantList, CommandError>;

    static Result callForEach(const QString &method, const QList<LinkId> &ids)
    {
        QStringList texts;
        for (const LinkId &id : ids) {
            texts.append(id.toString());
            if (texts.size() < linksPerCall && &id != &ids.last())
                continue;
            const Result called = done(call(method, {std::exchange(texts, {})}));
            if (!called)
                return called;
        }
        return {};
    }
    static Result done(const Answer &answer)
    {
        return answer ? Result() : Unexpected{answer.error()};
    }

    static Answer call(const QString &method, const QVariantList &arguments)
    {
        auto message =
            QDBusMessage::createMethodCall(SingleInstance::serviceName, SingleInstance::objectPath,
                                           LinksAdaptor::interfaceName, method);
        message.setArguments(arguments);
        message.setAutoStartService(false);
        const QDBusMessage answer =
            QDBusConnection::sessionBus().call(message, QDBus::Block, int(answerLimit.count()));
        if (answer.type() != QDBusMessage::ErrorMessage)
            return answer.arguments();
        if (answer.errorName().startsWith(u"app.strandloom.Error."))
            return Unexpected{CommandError{ExitCode::unusable, answer.errorMessage()}};
        const QString reason = u"the running program does not answer: " + answer.errorMessage();
        return Unexpected{CommandError{ExitCode::notRunning, reason}};
    }
};

} // namespace

WriteAccess::WriteAccess(Clock &clock)
    : m_clock(clock)
{
}

WriteAccess::~WriteAccess() = default;

Expected<LinkWriter *, CommandError> WriteAccess::writer()
{
    if (m_writer && m_clock.elapsed() - m_since > holdLimit) {
        release();
        std::this_thread::sleep_for(holdPause);
    }
    if (!m_writer) {
        auto chosen = choose();
        if (!chosen)
            return Unexpected{chosen.error()};
        m_writer = std::move(*chosen);
        m_since = m_clock.elapsed();
    }
    return m_writer.get();
}

void WriteAccess::release()
{
    m_writer.reset();
}

Expected<std::unique_ptr<LinkWriter>, CommandError> WriteAccess::choose()
{
    using Writer = std::unique_ptr<LinkWriter>;
    const auto begin = m_clock.elapsed();
    while (true) {
        if (ProgramWriter::isThere())
            return Writer(std::make_unique<ProgramWriter>());
        auto container =
            ModelContainer::open(ModelContainer::defaultFolder(), m_clock, lockAttempt);
        if (container)
            return Writer(std::make_unique<StoreWriter>(std::move(*container), m_clock));
        if (container.error().kind != StoreError::Kind::locked)
            return unusable(container.error());
        if (m_clock.elapsed() - begin > lockLimit)
            return Unexpected{CommandError{ExitCode::notRunning,
                                           u"the store is in use, and the program that uses it "
                                           "cannot be reached on the session bus"_s}};
    }
}
