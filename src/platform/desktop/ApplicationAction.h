// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>
#include <QStringView>

#include <array>
#include <optional>

/// What can be asked of the running program from outside.
enum class ApplicationAction { open, settings, exportLinks, quit, pause, resume };

inline constexpr std::array applicationActions{
    ApplicationAction::open, ApplicationAction::settings, ApplicationAction::exportLinks,
    ApplicationAction::quit, ApplicationAction::pause,    ApplicationAction::resume};

/// The action's name on D-Bus, in the desktop entry and on the command line.
inline QLatin1StringView nameOf(ApplicationAction action)
{
    constexpr std::array<QLatin1StringView, applicationActions.size()> names{
        QLatin1StringView("open"), QLatin1StringView("settings"), QLatin1StringView("export"),
        QLatin1StringView("quit"), QLatin1StringView("pause"),    QLatin1StringView("resume")};
    return names.at(std::size_t(action));
}

/// Absent when no action has that name.
inline std::optional<ApplicationAction> actionNamed(QStringView name)
{
    for (const ApplicationAction action : applicationActions) {
        if (name == nameOf(action))
            return action;
    }
    return std::nullopt;
}
