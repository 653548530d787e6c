// SPDX-License-Identifier: MIT
#include "settings/EmailTabContent.h"

#include "Caption.h"
#include "Card.h"
#include "Confirmation.h"
#include "EmailScheduler.h"
#include "Foreground.h"
#include "FormWidgets.h"
#include "IconButton.h"
#include "IconLabel.h"
#include "Preferences.h"
#include "Spinner.h"
#include "StatusLine.h"
#include "settings/EmailSetupSheet.h"
#include "settings/PreferenceControls.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHideEvent>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr int cardIconSize = 28;

QList<PickerEntry> hours()
{
    QList<PickerEntry> entries;
    for (int hour = 0; hour < 24; ++hour)
        entries.append({u"%1:00"_s.arg(hour, 2, 10, QChar(u'0')), hour});
    return entries;
}

void addPreferences(QVBoxLayout *column, Preferences &preferences, EmailScheduler &scheduler)
{
    const auto reschedule = [&scheduler](const auto &) { scheduler.scheduleNextEmail(); };
    auto *const form = makeForm();
    addRow(form, EmailTabContent::tr("Send To"),
           preferenceField(preferences, preferenceKeys::emailAddress,
                           EmailTabContent::tr("you@example.com"), reschedule));
    form->addRow(heading(EmailTabContent::tr("Send Time")));
    addRow(form, EmailTabContent::tr("Send at"),
           preferencePicker(preferences, preferenceKeys::emailSendHour, EmailScheduler::defaultHour,
                            hours(), reschedule));

    column->addWidget(preferenceToggle(preferences, preferenceKeys::emailDigestEnabled, false,
                                       EmailTabContent::tr("Enable Daily Email Digest"),
                                       reschedule));
    column->addLayout(form);
    column->addWidget(preferenceToggle(preferences, preferenceKeys::clearAfterEmail, true,
                                       EmailTabContent::tr("Clear links after sending"),
                                       reschedule));
}

} // namespace

EmailTabContent::EmailTabContent(const Dependencies &dependencies, QWidget *parent)
    : QWidget(parent)
    , m_pages(dependencies.pages)
    , m_model(dependencies.modelContext, dependencies.keys, dependencies.manualSend)
    , m_setupCard(makeSetupCard())
    , m_sender(makeSender())
{
    auto *const column = new QVBoxLayout(this);
    column->setSpacing(10);
    column->addWidget(m_setupCard);
    column->addWidget(m_sender);
    column->addWidget(new Caption(tr("Send your captured links to your inbox with AI summaries.")));
    addPreferences(column, dependencies.preferences, dependencies.scheduler);
    column->addWidget(divider());
    column->addLayout(makeSending());
    column->addWidget(m_outcome);
    column->addStretch();

    connect(&m_model, &EmailSettingsViewModel::changed, this, &EmailTabContent::refresh);
    refresh();
    m_model.refresh();
}

EmailTabContent::~EmailTabContent()
{
    if (isVisible())
        m_model.leave();
}

void EmailTabContent::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        m_model.leave();
}

QWidget *EmailTabContent::makeSetupCard()
{
    auto *const card = new Card;
    auto *const title = heading(tr("Email Setup Required"));
    auto *const text = new Caption(tr("To send emails, you'll need a free Resend API key. This "
                                      "keeps your data private - emails are sent directly from "
                                      "your Mac."));
    text->setAlignment(Qt::AlignHCenter);
    auto *const setUp = primaryButton(tr("Set Up Email..."));
    connect(setUp, &QPushButton::clicked, this, &EmailTabContent::showSetup);

    auto *const column = new QVBoxLayout(card);
    column->addWidget(new IconLabel(u"envelope-badge"_s, cardIconSize), 0, Qt::AlignHCenter);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addWidget(text);
    if (QWidget *const link =
            m_pages.link(ProviderPages::apiKeys, tr("Get a free API key at resend.com")))
        column->addWidget(link, 0, Qt::AlignHCenter);
    column->addWidget(setUp, 0, Qt::AlignHCenter);
    return card;
}

QWidget *EmailTabContent::makeSender()
{
    m_senderText = new Caption({}, Caption::Rank::primary);
    auto *const change = new QPushButton(tr("Change..."));
    connect(change, &QPushButton::clicked, this, &EmailTabContent::showSetup);
    auto *const remove = new IconButton(u"trash"_s, tr("Remove"));
    connect(remove, &IconButton::clicked, this, &EmailTabContent::confirmRemoval);

    auto *const sender = new QWidget;
    auto *const line = new QHBoxLayout(sender);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(m_senderText, 1);
    line->addWidget(change);
    line->addWidget(remove);
    return sender;
}

QLayout *EmailTabContent::makeSending()
{
    m_count = new Caption;
    m_send = new QPushButton(tr("Send Now"));
    connect(m_send, &QPushButton::clicked, &m_model, &EmailSettingsViewModel::sendNow);
    auto *const busy = new QWidget;
    busy->setFixedSize(20, 20);
    m_spinner = new Spinner(busy);
    m_outcome = new StatusLine;

    auto *const line = new QHBoxLayout;
    line->addWidget(m_count, 1);
    line->addWidget(busy);
    line->addWidget(m_send);
    return line;
}

void EmailTabContent::showSetup()
{
    if (openDialog())
        return;
    (new EmailSetupSheet(m_model, m_pages, this))->open();
}

void EmailTabContent::confirmRemoval()
{
    confirm(this,
            {tr("Remove Email Configuration?"),
             tr("The API key and the sender address are removed from this computer."),
             tr("Remove")},
            [this] { m_model.removeConfiguration(); });
}

void EmailTabContent::refresh()
{
    m_setupCard->setVisible(!m_model.isConfigured());
    m_sender->setVisible(m_model.isConfigured());
    m_senderText->setText(m_model.senderText());
    m_count->setText(m_model.countText());
    m_send->setEnabled(!m_model.isSending());
    m_spinner->setVisible(m_model.isSending());
    if (m_model.sendSuccess())
        m_outcome->tell(Tone::success, tr("Email sent successfully!"));
    else
        m_outcome->tell(Tone::error, m_model.sendError());
}
