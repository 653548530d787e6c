// SPDX-License-Identifier: MIT
#include "MenuBarView.h"

#include "Caption.h"
#include "Compositing.h"
#include "ElidedLabel.h"
#include "Foreground.h"
#include "FormWidgets.h"
#include "IconButton.h"
#include "IconLabel.h"
#include "LinkListView.h"
#include "MenuBarViewModel.h"
#include "PanelPlacement.h"
#include "SearchBar.h"
#include "Spinner.h"
#include "TintedIcon.h"
#include "settings/InlineSettingsView.h"
#include "style/DevicePixels.h"

#include <QApplication>
#include <QBoxLayout>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize panelSize(380, 520);
constexpr int placeholderIconSize = 32;
constexpr qreal cardRadius = 10;
constexpr Qt::WindowFlags panelFlags =
    Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;

} // namespace

MenuBarView::MenuBarView(MenuBarViewModel &model, MakeSettings makeSettings)
    : m_model(model)
    , m_makeSettings(std::move(makeSettings))
    , m_screens(new QStackedWidget)
    , m_list(new LinkListView(model))
    , m_search(new SearchBar(*m_list))
{
    setWindowTitle(u"Strandloom"_s);
    setAccessibleName(u"Strandloom"_s);
    setBackgroundRole(QPalette::Base);
    m_isRounded = isComposited();
    setAttribute(Qt::WA_TranslucentBackground, m_isRounded);

    m_screens->addWidget(makeLinksScreen());
    auto *const frame = new QVBoxLayout(this);
    frame->setContentsMargins(1, 1, 1, 1);
    frame->addWidget(m_screens);
    resize(panelSize);

    connect(m_list, &LinkListView::typed, m_search, &SearchBar::open);
    connect(m_search, &SearchBar::textChanged, this, &MenuBarView::search);
    connect(&m_model, &MenuBarViewModel::changed, this, &MenuBarView::refresh);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &MenuBarView::followFocus);
    refresh();
}

QWidget *MenuBarView::makeLinksScreen()
{
    m_body = new QStackedWidget;
    m_body->addWidget(makePlaceholder());
    m_body->addWidget(m_list);

    auto *const screen = new QWidget;
    auto *const column = new QVBoxLayout(screen);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(makeNotice());
    column->addWidget(makeModelLoad());
    column->addWidget(m_search);
    column->addWidget(m_body, 1);
    column->addWidget(divider());
    column->addWidget(makeFooter());
    return screen;
}

QWidget *MenuBarView::makeSettingsScreen()
{
    auto *const back = new QToolButton;
    back->setAutoRaise(true);
    back->setFocusPolicy(Qt::TabFocus);
    back->setIcon(tintedIcon(isRightToLeft() ? u"chevron-right"_s : u"chevron-left"_s));
    back->setText(tr("Back"));
    back->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(back, &QToolButton::clicked, this,
            [this] { m_model.setCurrentScreen(MenuBarScreen::links); });
    auto *const title = heading(tr("Settings"));

    m_settingsHeader = new QWidget;
    auto *const line = new QGridLayout(m_settingsHeader);
    line->setContentsMargins(8, 8, 12, 8);
    line->addWidget(back, 0, 0, Qt::AlignLeft);
    line->addWidget(title, 0, 0, Qt::AlignHCenter);

    m_settings = m_makeSettings();
    connect(m_settings, &InlineSettingsView::contentHeightChanged, this, &MenuBarView::place);
    auto *const screen = new QWidget;
    auto *const column = new QVBoxLayout(screen);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_settingsHeader);
    column->addWidget(divider());
    column->addWidget(m_settings, 1);
    return screen;
}

QWidget *MenuBarView::makeHeader()
{
    auto *const name = new QLabel(u"Strandloom"_s);
    name->setFont(scaledFont(name->font(), 1.2, QFont::Bold));
    m_today = new ElidedLabel(ElidedLabel::Rank::secondary);

    auto *const header = new QWidget;
    auto *const line = new QHBoxLayout(header);
    line->setContentsMargins(12, 12, 12, 8);
    line->addWidget(name);
    line->addStretch();
    line->addWidget(m_today);
    return header;
}

QWidget *MenuBarView::makeNotice()
{
    m_notice = new Caption({}, Caption::Rank::primary);
    m_resume = new QPushButton(tr("Resume"));
    m_resume->setAutoDefault(false);
    connect(m_resume, &QPushButton::clicked, &m_model, &MenuBarViewModel::resumeRequested);
    m_noticeLine = new QWidget;
    auto *const line = new QHBoxLayout(m_noticeLine);
    line->setContentsMargins(12, 0, 12, 8);
    line->addWidget(m_notice, 1);
    line->addWidget(m_resume);
    return m_noticeLine;
}

QWidget *MenuBarView::makeModelLoad()
{
    m_modelLoad = new QProgressBar;
    m_modelLoad->setRange(0, 100);
    m_modelLoad->setTextVisible(false);
    m_modelLoad->setFixedHeight(6);
    m_modelLoad->setAccessibleName(tr("Loading AI model..."));
    auto *const text = new ElidedLabel(ElidedLabel::Rank::secondary);
    text->setText(tr("Loading AI model..."));

    m_modelLoadLine = new QWidget;
    auto *const column = new QVBoxLayout(m_modelLoadLine);
    column->setContentsMargins(12, 0, 12, 8);
    column->setSpacing(4);
    column->addWidget(text);
    column->addWidget(m_modelLoad);
    return m_modelLoadLine;
}

QWidget *MenuBarView::makePlaceholder()
{
    auto *const title = new QLabel(tr("No Links Yet"));
    title->setFont(scaledFont(title->font(), 1.1, QFont::DemiBold));
    auto *const hint = new ElidedLabel(ElidedLabel::Rank::secondary);
    hint->setText(tr("Copy a URL to get started"));

    auto *const placeholder = new QWidget;
    auto *const column = new QVBoxLayout(placeholder);
    column->setSpacing(8);
    column->addStretch();
    column->addWidget(new IconLabel(u"link"_s, placeholderIconSize), 0, Qt::AlignHCenter);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addWidget(hint, 0, Qt::AlignHCenter);
    column->addStretch();
    return placeholder;
}

QWidget *MenuBarView::makeFooter()
{
    m_count = new ElidedLabel(ElidedLabel::Rank::secondary);
    m_summarize = new IconButton(u"sparkles"_s, QString());
    m_spinner = new Spinner(m_summarize);
    connect(m_summarize, &IconButton::clicked, &m_model, &MenuBarViewModel::summarize);
    auto *const settings = new IconButton(u"gear"_s, tr("Settings"));
    connect(settings, &IconButton::clicked, this,
            [this] { m_model.setCurrentScreen(MenuBarScreen::settings); });
    auto *const quit = new IconButton(u"power"_s, tr("Quit Strandloom"));
    connect(quit, &IconButton::clicked, this, &MenuBarView::quitRequested);

    auto *const footer = new QWidget;
    auto *const line = new QHBoxLayout(footer);
    line->setContentsMargins(12, 6, 8, 6);
    line->setSpacing(4);
    line->addWidget(m_count);
    line->addStretch();
    line->addWidget(m_summarize);
    line->addWidget(settings);
    line->addWidget(quit);
    return footer;
}

void MenuBarView::refresh()
{
    m_today->setText(m_model.todayText());
    m_count->setText(m_model.countText());
    m_notice->setText(m_model.notice());
    m_noticeLine->setVisible(!m_model.notice().isEmpty());
    m_resume->setVisible(m_model.isPaused());
    m_modelLoadLine->setVisible(m_model.modelLoad().has_value());
    m_modelLoad->setValue(int(m_model.modelLoad().value_or(0) * 100));
    m_summarize->setToolTip(m_model.summarizeToolTip());
    m_summarize->setAccessibleName(m_model.summarizeToolTip());
    m_summarize->setIconShown(!m_model.isSummarizing());
    m_spinner->setVisible(m_model.isSummarizing());
    m_body->setCurrentIndex(m_model.isEmpty() ? 0 : 1);
    showScreen();
    if (hasFocus())
        focusLinks();
}

void MenuBarView::showScreen()
{
    const bool isSettings = m_model.currentScreen() == MenuBarScreen::settings;
    if (isSettings == (m_settings != nullptr))
        return;
    if (isSettings) {
        m_screens->setCurrentIndex(m_screens->addWidget(makeSettingsScreen()));
        m_settings->setFocus();
    } else {
        QWidget *const left = m_screens->currentWidget();
        m_screens->removeWidget(left);
        left->deleteLater(); // not now: its own Back may be what was pressed
        m_settings = nullptr;
        focusLinks();
    }
    place();
}

/// An empty list takes no focus, and would leave it to a button that nobody thought of.
void MenuBarView::focusLinks()
{
    (m_model.isEmpty() ? static_cast<QWidget *>(this) : m_list)->setFocus();
}

void MenuBarView::showAsPanel(const std::optional<QRect> &trayIcon)
{
    if (!m_isPanel)
        setWindowFlags(panelFlags);
    m_isPanel = true;
    m_trayIcon = trayIcon;
    m_cursor = QCursor::pos();
    m_model.setCurrentScreen(MenuBarScreen::links);
    place();
    present();
}

/// As high as the screen it shows wants to be, at the tray icon. A window stays as the user made
/// it.
void MenuBarView::place()
{
    if (!m_isPanel)
        return;
    const QPoint anchor = m_trayIcon ? m_trayIcon->center() : m_cursor;
    const QScreen *screen = QGuiApplication::screenAt(anchor);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    setGeometry(panelPlacement(wantedSize(), m_trayIcon, m_cursor, screen->availableGeometry()));
}

QSize MenuBarView::wantedSize() const
{
    if (m_model.currentScreen() == MenuBarScreen::links)
        return panelSize;
    constexpr int lines = 3; // the frame's and the divider
    constexpr int rounding = 1; // which a window manager takes away at some scale factors
    return {panelSize.width(),
            m_settingsHeader->sizeHint().height() + m_settings->contentHeight() + lines + rounding};
}

void MenuBarView::showAsWindow()
{
    if (m_isPanel)
        setWindowFlags(Qt::Window);
    m_isPanel = false;
    m_model.setCurrentScreen(MenuBarScreen::links);
    present();
}

void MenuBarView::present()
{
    m_model.recountToday();
    m_list->startAnew();
    bringToFront(*this);
    // Hidden and shown so quickly that the desktop has not taken the keyboard away meanwhile, it
    // will not be given either.
    if (windowHandle() == QGuiApplication::focusWindow())
        QApplication::setActiveWindow(this);
    focusLinks();
}

bool MenuBarView::event(QEvent *event)
{
    // A menu or a dialog of ours takes the activation too, and must not lose its parent.
    if (event->type() == QEvent::WindowDeactivate && m_isPanel && !QApplication::activePopupWidget()
        && !ownDialog())
        hide();
    return QWidget::event(event);
}

/// The dialog that was opened from here and waits for its answer; null when there is none.
QDialog *MenuBarView::ownDialog() const
{
    QDialog *const dialog = openDialog();
    const QWidget *window = dialog;
    while (window && window != this)
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    return window ? dialog : nullptr;
}

/// The user who turns from a dialog to another window wants to see that: the panel would stay above
/// it.
void MenuBarView::followFocus(const QWindow *focused)
{
    const void *const before = std::exchange(m_focused, focused);
    QDialog *const dialog = ownDialog();
    if (!m_isPanel || !isVisible() || !dialog || before != dialog->windowHandle())
        return;
    while (focused && focused != windowHandle())
        focused = focused->transientParent();
    if (focused)
        return;
    connect(
        dialog, &QDialog::finished, this, [this] { bringToFront(*this); },
        Qt::SingleShotConnection);
    hide();
}

void MenuBarView::hideEvent(QHideEvent *)
{
    if (ownDialog())
        return;
    m_model.setCurrentScreen(MenuBarScreen::links); // a screen begins anew when it is next seen
    m_search->close();
    m_model.links().startAnew();
}

void MenuBarView::keyPressEvent(QKeyEvent *event)
{
    const bool isLinks = m_model.currentScreen() == MenuBarScreen::links;
    if (event->key() == Qt::Key_Escape)
        isLinks && m_search->isVisible() ? m_search->stepBack() : hide();
    else if (isLinks && event->matches(QKeySequence::Find) && !m_model.isEmpty())
        m_search->open();
    else if (isLinks && event->matches(QKeySequence::Paste))
        m_model.paste();
    else
        QWidget::keyPressEvent(event);
}

void MenuBarView::search(const QString &text)
{
    m_model.setSearchText(text);
    m_list->startAnew();
}

void MenuBarView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor line = palette().color(QPalette::Mid);
    draw(painter,
         {QRectF(rect()), m_isPanel && m_isRounded ? cardRadius : 0,
          palette().color(QPalette::Base), m_isPanel ? line : QColor(Qt::transparent)});
}
