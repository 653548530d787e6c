// SPDX-License-Identifier: MIT
#include "DrawnIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

namespace
{

class DrawnIconEngine final : public QIconEngine
{
public:
    DrawnIconEngine(QString file, std::optional<QColor> color, QString themeName)
        : m_file(std::move(file))
        , m_color(color)
        , m_themeName(std::move(themeName))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, pixmap(rect.size() * ratio, mode, state));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode, QIcon::State) override
    {
        return drawnPixmap(m_file, size, m_color);
    }
    QString iconName() override { return m_themeName; }
    QIconEngine *clone() const override { return new DrawnIconEngine(*this); }

private:
    QString m_file;
    std::optional<QColor> m_color;
    QString m_themeName;
};

} // namespace

QPixmap drawnPixmap(const QString &file, const QSize &size, std::optional<QColor> color)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(file).render(&painter);
    if (color) {
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), *color);
    }
    return pixmap;
}

QIcon drawnIcon(const QString &file, std::optional<QColor> color, const QString &themeName)
{
    return QIcon(new DrawnIconEngine(file, color, themeName));
}
