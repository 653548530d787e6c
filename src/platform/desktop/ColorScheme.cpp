// SPDX-License-Identifier: MIT
#include "ColorScheme.h"

#include "DebugLog.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QPalette>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace
{

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settings = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
constexpr uint preferDark = 1; // the portal's documentation of org.freedesktop.appearance

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness()
        < palette.color(QPalette::WindowText).lightness();
}

/// `Read` wraps its answer in one variant more than the signal does.
uint schemeOf(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

} // namespace

QPalette darkPalette()
{
    const QColor window(0x20, 0x21, 0x25), base(0x31, 0x33, 0x3a), text(0xe8, 0xe9, 0xed);
    QPalette palette(window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Mid, QColor(0x47, 0x49, 0x52));
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Link, QColor(0x7d, 0xa9, 0xff));
    palette.setColor(QPalette::Highlight, QColor(0x3b, 0x6f, 0xd9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    const QColor faint(0xa6, 0xa8, 0xb1);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x7c, 0x7e, 0x87));
    return palette;
}

ColorScheme::ColorScheme(QObject *parent)
    : QObject(parent)
{
}

void ColorScheme::follow()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    qRegisterMetaType<QDBusVariant>(); // no signal comes into a slot of a type not known by name
    if (!bus.connect(service, path, settings, u"SettingChanged"_s, this,
                     SLOT(settingChanged(QString, QString, QDBusVariant))))
        debugLog(u"Failed to listen to the settings portal"_s);
    auto *const portal =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &ColorScheme::ask);
    ask();
}

void ColorScheme::ask()
{
    auto question = QDBusMessage::createMethodCall(service, path, settings, u"Read"_s);
    question << appearance << colorScheme;
    auto *const answer =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid())
            apply(schemeOf(reply.value().variant()) == preferDark);
    });
}

void ColorScheme::settingChanged(const QString &group, const QString &key,
                                 const QDBusVariant &value)
{
    if (group == appearance && key == colorScheme)
        apply(schemeOf(value.variant()) == preferDark);
}

void ColorScheme::apply(bool dark)
{
    debugLog(dark ? u"Colour scheme: dark"_s : u"Colour scheme: light"_s);
    if (dark && !isDark(QApplication::palette())) {
        m_light = QApplication::palette();
        QApplication::setPalette(darkPalette());
    } else if (!dark && m_light) {
        QApplication::setPalette(*std::exchange(m_light, std::nullopt));
    }
}
