// SPDX-License-Identifier: MIT
#include "UpdateView.h"

#include "FormWidgets.h"
#include "UrlOpener.h"

#include <QBoxLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

using namespace Qt::StringLiterals;
using Kind = UpdateStatus::Kind;

namespace
{

constexpr int contentWidth = 320;
constexpr int padding = 16;

QString titleOf(const UpdateStatus &status)
{
    switch (status.kind) {
    case Kind::checking:
        return UpdateView::tr("Checking for updates…");
    case Kind::upToDate:
        return UpdateView::tr("Strandloom is up to date");
    case Kind::newVersion:
        return UpdateView::tr("Strandloom %1 is available").arg(status.version);
    case Kind::fromSystemPackages:
        return UpdateView::tr("Updates come with your system");
    case Kind::failed:
        return UpdateView::tr("The check for updates failed");
    }
    Q_UNREACHABLE();
}

QString messageOf(const UpdateStatus &status)
{
    switch (status.kind) {
    case Kind::checking:
        return {};
    case Kind::upToDate:
        return UpdateView::tr("Version %1 is the newest one.")
            .arg(QLatin1StringView(STRANDLOOM_VERSION));
    case Kind::newVersion:
        return status.notes;
    case Kind::fromSystemPackages:
        return UpdateView::tr(
            "New versions of Strandloom are installed with your system's packages.");
    case Kind::failed:
        return status.reason;
    }
    Q_UNREACHABLE();
}

QLabel *textLabel()
{
    auto *const label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFixedWidth(contentWidth);
    return label;
}

} // namespace

UpdateView::UpdateView(UrlOpener &urlOpener, QWidget *parent)
    : QDialog(parent)
    , m_urlOpener(urlOpener)
    , m_title(textLabel())
    , m_message(textLabel())
    , m_openPage(new QPushButton(tr("Open Release Page")))
    , m_close(new QPushButton(tr("Close")))
{
    setWindowTitle(tr("Software Update"));
    m_title->setFont(scaledFont(m_title->font(), 1.2, QFont::Bold));
    connect(m_openPage, &QPushButton::clicked, this, &UpdateView::openReleasePage);
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    auto *const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_close);
    buttons->addWidget(m_openPage);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(12);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(m_title);
    column->addWidget(m_message);
    column->addLayout(buttons);
}

void UpdateView::present(const UpdateStatus &status)
{
    m_releasePage = status.releasePage;
    m_title->setText(titleOf(status));
    m_message->setText(messageOf(status));
    m_message->setVisible(!m_message->text().isEmpty());
    setAccessibleDescription(m_title->text() % u'\n' % m_message->text());
    const bool hasPage = status.kind == Kind::newVersion;
    m_openPage->setVisible(hasPage);
    (hasPage ? m_openPage : m_close)->setDefault(true);

    // What comes later may find the user typing elsewhere.
    const bool isAtOnce = status.kind == Kind::checking || status.kind == Kind::fromSystemPackages;
    setAttribute(Qt::WA_ShowWithoutActivating, !isAtOnce);
    if (!isVisible())
        place();
    show();
    if (isAtOnce) {
        raise();
        activateWindow();
    }
}

/// To the middle of the screen in use. The window manager would place it as well; but until it has
/// told where, a change of the size takes the window into the corner.
void UpdateView::place()
{
    layout()->activate();
    const QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    move(screen->availableGeometry().center() - rect().center());
}

void UpdateView::openReleasePage()
{
    m_urlOpener.open(m_releasePage);
    accept();
}
