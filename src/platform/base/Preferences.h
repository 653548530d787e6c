// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"
#include "Clock.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <optional>

/// The names under which preferences are kept; the one list of them.
namespace preferenceKeys
{
inline constexpr QLatin1StringView launchAtLogin("launchAtLogin");
inline constexpr QLatin1StringView showInDock("showInDock");
inline constexpr QLatin1StringView checkForUpdates("checkForUpdates");
inline constexpr QLatin1StringView autoInstallUpdates("autoInstallUpdates");
inline constexpr QLatin1StringView emailDigestEnabled("emailDigestEnabled");
inline constexpr QLatin1StringView emailAddress("emailAddress");
inline constexpr QLatin1StringView emailSendHour("emailSendHour"); ///< 0 to 23
inline constexpr QLatin1StringView clearAfterEmail("clearAfterEmail");
inline constexpr QLatin1StringView autoPruneDays("autoPruneDays"); ///< 0: never
inline constexpr QLatin1StringView lastEmailSentDate("lastEmailSentDate");
/// When the mail provider has last refused a scheduled mail.
inline constexpr QLatin1StringView lastEmailRefusedDate("lastEmailRefusedDate");
/// When the whole store was last found sound.
inline constexpr QLatin1StringView lastStoreCheckDate("lastStoreCheckDate");
} // namespace preferenceKeys

/// The user's preferences, in one INI file. A key that was never set, or whose value is not of the
/// kind asked for, is absent: which default that means is for the reader to say. A file that cannot
/// be read is as good as none; one that cannot be written leaves the values for this run. Either is
/// logged. Main thread only.
class Preferences : public QObject
{
    Q_OBJECT
public:
    /// `path` need not exist yet.
    explicit Preferences(const QString &path, QObject *parent = nullptr);
    /// `$XDG_CONFIG_HOME/strandloom/settings.ini`
    static QString defaultPath();

    std::optional<bool> boolean(QLatin1StringView key) const;
    std::optional<int> integer(QLatin1StringView key) const;
    std::optional<QString> string(QLatin1StringView key) const;
    std::optional<Instant> date(QLatin1StringView key) const;

    void set(QLatin1StringView key, bool value);
    void set(QLatin1StringView key, int value);
    void set(QLatin1StringView key, const QString &value);
    /// Kept as an ISO 8601 date and time in UTC.
    void set(QLatin1StringView key, Instant value);

Q_SIGNALS:
    void changed(QLatin1StringView key);

private:
    void keep(QLatin1StringView key, const QString &value);
    Expected<void, FileError> write(QLatin1StringView key, const QString &value) const;

    QString m_path;
    QHash<QString, QString> m_values;
};
