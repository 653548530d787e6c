// SPDX-License-Identifier: MIT
#include "style/LoomStyle.h"

#include "ColorScheme.h"
#include "Rows.h"
#include "style/Colors.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace
{

using Make = std::function<QWidget *()>;

QImage picture(QWidget &widget, qreal ratio)
{
    QImage image((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(widget.palette().color(QPalette::Window));
    widget.render(&image);
    return image;
}

/// The strongest contrast to `ground` among the pixels of `rect`.
double strongest(const QImage &image, const QRect &rect, const QColor &ground)
{
    double found = 1;
    const QRect seen = rect & image.rect();
    for (int y = seen.top(); y <= seen.bottom(); ++y) {
        for (int x = seen.left(); x <= seen.right(); ++x)
            found = std::max(found, contrast(image.pixelColor(x, y), ground));
    }
    return found;
}

QWidget *withRole(const char *role)
{
    auto *const button = new QPushButton(u"Text"_s);
    button->setProperty("role", QString::fromLatin1(role));
    return button;
}

QWidget *checkBox(bool isChecked)
{
    auto *const box = new QCheckBox(u"Text"_s);
    box->setChecked(isChecked);
    return box;
}

QWidget *lineEdit(const QString &text)
{
    auto *const edit = new QLineEdit(text);
    edit->setPlaceholderText(u"Text"_s);
    return edit;
}

QWidget *comboBox()
{
    auto *const box = new QComboBox;
    box->addItem(u"Text"_s);
    return box;
}

QWidget *tabBar()
{
    auto *const bar = new QTabBar;
    bar->addTab(u"Text"_s);
    bar->addTab(u"Other"_s);
    return bar;
}

/// Where text begins and what it stands on is read from the picture, at `inside` from the left.
struct Control {
    const char *name;
    Make make;
    bool hasOutline;
    int inside;
};

const QList<Control> controls{
    {"button", [] { return new QPushButton(u"Text"_s); }, false, 6},
    {"primary button", [] { return withRole("primary"); }, false, 6},
    {"destructive button", [] { return withRole("destructive"); }, false, 6},
    {"field", [] { return lineEdit(u"Text"_s); }, true, 6},
    {"empty field", [] { return lineEdit({}); }, true, 6},
    {"picker", [] { return comboBox(); }, true, 6},
    {"date", [] { return new QDateEdit; }, true, 6},
    {"check box", [] { return checkBox(false); }, true, 22},
    {"checked box", [] { return checkBox(true); }, true, 22},
    {"tabs", [] { return tabBar(); }, false, 6},
};

} // namespace

class LoomStyleTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new LoomStyle); }

    /// Texts 4.5 to 1, outlines 3 to 1, and a focus that is seen.
    void contrastsSuffice()
    {
        Rows<Control, bool> rows{};
        for (const Control &control : controls) {
            for (const bool isDark : {false, true})
                rows.add(
                    {QByteArray(control.name) + (isDark ? ", dark" : ", light"), control, isDark});
        }
        for (const auto &[tested, isDark] : rows) {
            constexpr qreal ratio = 4; // so that strokes reach their colour
            QApplication::setPalette(isDark ? darkPalette() : LoomStyle::lightPalette());
            QWidget window;
            QWidget *const widget = tested.make();
            widget->setParent(&window);
            widget->move(10, 10);
            widget->resize(widget->sizeHint());
            window.resize(widget->size() + QSize(20, 20));
            const QPalette palette = window.palette();

            const QImage image = picture(*widget, ratio);
            const int middle = image.height() / 2;
            const QColor ground = image.pixelColor(int(tested.inside * ratio), middle);
            const QRect text(int((tested.inside + 4) * ratio), int(8 * ratio), int(30 * ratio),
                             image.height() - int(16 * ratio));
            const double ink = strongest(image, text, ground);
            QVERIFY2(ink >= 4.5, qPrintable(u"text %1"_s.arg(ink)));
            if (tested.hasOutline) {
                const QRect edge(0, middle, int(2 * ratio), 1);
                const double line = strongest(image, edge, palette.color(QPalette::Window));
                QVERIFY2(line >= 3, qPrintable(u"outline %1"_s.arg(line)));
            }

            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            widget->setFocus(Qt::TabFocusReason);
            const QImage focused = picture(*widget, ratio);
            int changed = 0; // the ring's length in pixels of the screen, two of them wide
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const bool isSeen =
                        contrast(image.pixelColor(x, y), focused.pixelColor(x, y)) >= 1.5;
                    changed += int(isSeen);
                }
            }
            const double length = changed / (ratio * ratio) / 2;
            QVERIFY2(length >= 40, qPrintable(u"ring of %1"_s.arg(length)));
            QApplication::setPalette(QPalette());
        }
    }
};

QTEST_MAIN(LoomStyleTest)
#include "LoomStyleTest.moc"
