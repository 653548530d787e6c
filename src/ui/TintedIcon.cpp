// SPDX-License-Identifier: MIT
#include "TintedIcon.h"

#include "DrawnIcon.h"
#include "style/Colors.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

/// Resources of a static library come in only where something asks for them.
static void initializeIcons()
{
    Q_INIT_RESOURCE(uiicons);
}

using namespace Qt::StringLiterals;

namespace
{

class TintedIconEngine final : public QIconEngine
{
public:
    TintedIconEngine(QString name, std::optional<Tone> tone)
        : m_name(std::move(name))
        , m_tone(tone)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, render(rect.size() * ratio, mode));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        return render(size, mode);
    }
    QIconEngine *clone() const override { return new TintedIconEngine(*this); }

private:
    QPixmap render(const QSize &pixels, QIcon::Mode mode) const
    {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QPalette palette = QGuiApplication::palette();
        const QColor color =
            m_tone ? toneColor(*m_tone, palette) : palette.color(group, QPalette::WindowText);
        const QString key = u"tinted/%1/%2x%3/%4"_s.arg(m_name)
                                .arg(pixels.width())
                                .arg(pixels.height())
                                .arg(color.rgba());
        QPixmap pixmap;
        if (QPixmapCache::find(key, &pixmap))
            return pixmap;

        pixmap = drawnPixmap(u":/icons/"_s + m_name + u".svg", pixels, color);
        QPixmapCache::insert(key, pixmap);
        return pixmap;
    }

    QString m_name;
    std::optional<Tone> m_tone;
};

} // namespace

QIcon tintedIcon(const QString &name, std::optional<Tone> tone)
{
    initializeIcons();
    return QIcon(new TintedIconEngine(name, tone));
}

QColor secondaryTextColor(const QPalette &palette)
{
    return blended(palette.color(QPalette::Text), palette.color(QPalette::Base), 0.66);
}
