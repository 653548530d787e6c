// SPDX-License-Identifier: MIT
#include "CheckUp.h"

#include <QUrl>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

Finding well(const QString &name, const QString &text)
{
    return {name, true, text};
}

Finding problem(const QString &name, const QString &text)
{
    return {name, false, text};
}

Finding storeFinding(const std::optional<StoreCondition> &store)
{
    const QString name = u"store"_s;
    if (!store)
        return problem(name, u"The disk does not answer."_s);
    if (!*store)
        return problem(name, description(store->error()) + u'.');
    return well(name, **store ? u"Sound."_s : u"No links are stored yet."_s);
}

Finding clipboardFinding(const QString &means, const QString &limitation)
{
    const QString text =
        means + (means.isEmpty() || limitation.isEmpty() ? u""_s : u" "_s) + limitation;
    return {u"clipboard"_s, limitation.isEmpty(), text};
}

Finding trayFinding(const std::optional<TrayKind> &tray)
{
    const QString name = u"tray"_s;
    if (!tray)
        return problem(name, u"The desktop does not answer."_s);
    switch (*tray) {
    case TrayKind::statusNotifier:
        return well(name, u"A StatusNotifier host shows the icon."_s);
    case TrayKind::embedding:
        return well(name, u"An XEmbed tray shows the icon."_s);
    case TrayKind::none:
        return problem(name,
                       u"There is none. The panel opens as a window, again with each further "
                       "start of Strandloom."_s);
    }
    Q_UNREACHABLE();
}

Finding secretServiceFinding(const std::optional<SecretServiceState> &state, bool sendsMail)
{
    const QString name = u"secret service"_s;
    if (!state)
        return problem(name, u"It does not answer."_s);
    switch (*state) {
    case SecretServiceState::unlocked:
        return well(name, u"Present."_s);
    case SecretServiceState::locked:
        return {name, !sendsMail,
                sendsMail ? u"Locked. The daily mail is not sent until it is unlocked."_s
                          : u"Locked."_s};
    case SecretServiceState::absent:
        return problem(name, u"There is none. E-mail cannot be set up without one."_s);
    }
    Q_UNREACHABLE();
}

/// The program never reads the desktop's list back, so the two may differ.
Finding loginItemFinding(bool isWanted, bool isThere)
{
    const QString name = u"login item"_s;
    if (isWanted == isThere)
        return well(name,
                    isThere ? u"Strandloom starts with the session."_s
                            : u"Strandloom does not start with the session."_s);
    return problem(name,
                   isWanted ? u"Launch at Login is on, but the session does not start "
                              "Strandloom. Turn it off and on again."_s
                            : u"Launch at Login is off, but the session starts Strandloom. "
                              "Turn it on and off again."_s);
}

/// As the HTTP library reads it; absent when it cannot. Without the password, if there is one.
std::optional<QString> proxyAddress(const QString &value)
{
    constexpr std::array schemes{u"http", u"https", u"socks4", u"socks4a", u"socks5", u"socks5h"};
    const QUrl url(value.contains(u"://") ? value : QString(u"http://" + value));
    const bool isKnown = std::find(schemes.begin(), schemes.end(), url.scheme()) != schemes.end();
    if (!url.isValid() || url.host().isEmpty() || !isKnown)
        return std::nullopt;
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery
                        | QUrl::RemoveFragment);
}

Finding proxyFinding(const QProcessEnvironment &environment)
{
    const QString name = u"network proxy"_s;
    QStringList proxies;
    for (const auto &variable :
         {u"http_proxy"_s, u"https_proxy"_s, u"HTTPS_PROXY"_s, u"all_proxy"_s, u"ALL_PROXY"_s}) {
        const QString value = environment.value(variable);
        if (value.isEmpty())
            continue;
        const auto address = proxyAddress(value);
        if (!address)
            return problem(name, u"The value of %1 is not the address of a proxy."_s.arg(variable));
        proxies.append(variable + u'=' + *address);
    }
    return well(name,
                proxies.isEmpty() ? u"None in the environment."_s
                                  : QString(proxies.join(u", ") + u'.'));
}

Finding versionFinding(const CheckUp &checkUp)
{
    const auto named = [&](const QString &variable) {
        return checkUp.environment.value(variable, u"unknown"_s);
    };
    return well(
        u"versions"_s,
        u"strandloom " STRANDLOOM_VERSION ", %1; desktop %2, session %3."_s.arg(
            checkUp.libraries, named(u"XDG_CURRENT_DESKTOP"_s), named(u"XDG_SESSION_TYPE"_s)));
}

} // namespace

QList<Finding> findings(const CheckUp &checkUp)
{
    return {storeFinding(checkUp.store),
            clipboardFinding(checkUp.clipboardMeans, checkUp.clipboardLimitation),
            trayFinding(checkUp.tray),
            secretServiceFinding(checkUp.secretService, checkUp.sendsMail),
            loginItemFinding(checkUp.wantsLogin, checkUp.isLoginItem),
            proxyFinding(checkUp.environment),
            versionFinding(checkUp)};
}
