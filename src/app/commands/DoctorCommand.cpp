// SPDX-License-Identifier: MIT
#include "commands/DoctorCommand.h"

#include "CheckUp.h"
#include "ClipboardSource.h"
#include "EmbeddingTray.h"
#include "HttpModule.h"
#include "LoginItem.h"
#include "MakeClipboardSource.h"
#include "ModelContainer.h"
#include "Module.h"
#include "Preferences.h"
#include "StatusNotifierHost.h"
#include "StoreDatabase.h"
#include "StoreReader.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <SQLiteCpp/Database.h>
#include <algorithm>
#include <cstdlib>
#include <future>
#include <thread>
#include <unicode/uvernum.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// For all questions together, which are asked at the same time.
constexpr auto patience = 4s;

/// A question whose answer may never come: it is asked on a thread of its own.
template <typename Answer>
class Question
{
public:
    explicit Question(Answer (*ask)())
    {
        std::packaged_task<Answer()> task(ask);
        m_answer = task.get_future();
        m_thread = std::thread(std::move(task));
    }
    Question(const Question &) = delete;
    Question &operator=(const Question &) = delete;
    ~Question()
    {
        if (m_thread.joinable())
            m_thread.detach(); // the process is about to end without it
    }

    std::optional<Answer> answer(const QDeadlineTimer &limit)
    {
        if (m_answer.wait_for(limit.remainingTimeAsDuration()) != std::future_status::ready)
            return std::nullopt;
        m_thread.join(); // what it leaves to the end of a thread is done before that of the process
        return m_answer.get();
    }

private:
    std::future<Answer> m_answer;
    std::thread m_thread;
};

StoreCondition storeCondition()
{
    const QString folder = ModelContainer::defaultFolder();
    const auto isStored = isStoreFileThere(StoreDatabase::pathIn(folder));
    if (!isStored || !*isStored)
        return isStored;
    const auto isSound = checkIntegrity(folder);
    return isSound ? StoreCondition(true) : Unexpected{isSound.error()};
}

/// In the order in which the program prefers them.
TrayKind trayKind()
{
    if (hasStatusNotifierHost())
        return TrayKind::statusNotifier;
    return hasEmbeddingTray() ? TrayKind::embedding : TrayKind::none;
}

/// Waits until it is known which copies the clipboard shows.
std::unique_ptr<ClipboardSource> examinedClipboard(const QDeadlineTimer &limit)
{
    auto clipboard = makeClipboardSource();
    QEventLoop loop;
    QObject::connect(clipboard.get(), &ClipboardSource::limitationChanged, &loop,
                     &QEventLoop::quit);
    QTimer::singleShot(limit.remainingTime(), &loop, &QEventLoop::quit);
    loop.exec();
    return clipboard;
}

QString libraryVersions()
{
    const auto http = loadModule<HttpModule>();
    return u"Qt %1, libcurl %2, SQLite %3, ICU %4"_s.arg(
        QLatin1StringView(qVersion()),
        QLatin1StringView(http ? (*http)->libraryVersion : "missing"),
        QLatin1StringView(SQLite::getLibVersion()), QLatin1StringView(U_ICU_VERSION));
}

CheckUp examine()
{
    const QDeadlineTimer limit(patience);
    Question store(storeCondition);
    Question tray(trayKind);
    Question secretService(secretServiceState);
    const Preferences preferences(Preferences::defaultPath());
    const auto clipboard = examinedClipboard(limit);

    CheckUp checkUp;
    checkUp.clipboardMeans = clipboard->means();
    checkUp.clipboardLimitation = clipboard->limitation();
    checkUp.sendsMail = preferences.boolean(preferenceKeys::emailDigestEnabled).value_or(false);
    checkUp.wantsLogin = preferences.boolean(preferenceKeys::launchAtLogin).value_or(false);
    checkUp.isLoginItem = LoginItem(QCoreApplication::applicationFilePath()).isRegistered();
    checkUp.environment = QProcessEnvironment::systemEnvironment();
    checkUp.libraries = libraryVersions();
    checkUp.store = store.answer(limit);
    checkUp.tray = tray.answer(limit);
    checkUp.secretService = secretService.answer(limit);
    return checkUp;
}

void printText(const QList<Finding> &all)
{
    for (const Finding &finding : all) {
        const QString line = (finding.isWell ? u"ok       "_s : u"problem  "_s) % finding.name
            % u": " % finding.text % u'\n';
        print(line.toUtf8());
    }
}

void printJson(const QList<Finding> &all, bool areWell)
{
    QJsonArray checks;
    for (const Finding &finding : all)
        checks.append(QJsonObject{
            {u"name"_s, finding.name}, {u"isWell"_s, finding.isWell}, {u"text"_s, finding.text}});
    const QJsonObject object{{u"isWell"_s, areWell}, {u"checks"_s, checks}};
    print(QJsonDocument(object).toJson(QJsonDocument::Compact).append('\n'));
}

} // namespace

Expected<DoctorRequest, QString> parseDoctorArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"json"_s, {}});
    if (const auto parsed = parseOptions(parser, arguments); !parsed)
        return Unexpected{parsed.error()};
    return DoctorRequest{parser.isSet(u"json"_s)};
}

int runDoctor(const DoctorRequest &request)
{
    const CheckUp checkUp = examine();
    QList<Finding> all = findings(checkUp);
    for (Finding &finding : all)
        finding.text = onOneLine(finding.text); // with words of the system's and of libraries
    const bool areWell = std::all_of(all.begin(), all.end(), std::mem_fn(&Finding::isWell));
    if (request.asJson)
        printJson(all, areWell);
    else
        printText(all);
    const int code = finish(areWell ? ExitCode::done : ExitCode::nothing);
    if (!checkUp.store || !checkUp.tray || !checkUp.secretService)
        std::_Exit(code); // what hangs would also hold up an orderly end
    return code;
}
