// SPDX-License-Identifier: MIT
#include "settings/EmailSetupSheet.h"

#include "Caption.h"
#include "FormWidgets.h"
#include "ResendKeyService.h"
#include "StatusLine.h"
#include "TintedIcon.h"
#include "settings/EmailSettingsViewModel.h"

#include <QAction>
#include <QBoxLayout>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr int sheetWidth = 380;
const QString rightAddress = u"me@mine.example"_s; ///< with which only the key can be wrong

QLayout *steps()
{
    auto *const column = new QVBoxLayout;
    column->setSpacing(4);
    const QStringList lines = {
        EmailSetupSheet::tr("Sign up free at resend.com"),
        EmailSetupSheet::tr("Create an API key"),
        EmailSetupSheet::tr("Add a verified domain, or use onboarding@resend.dev for testing"),
    };
    for (int number = 1; number <= lines.size(); ++number) {
        auto *const step = new QLabel(u"%1. %2"_s.arg(number).arg(lines.at(number - 1)));
        step->setWordWrap(true);
        column->addWidget(step);
    }
    return column;
}

QAction *errorMark(QLineEdit &field)
{
    return field.addAction(tintedIcon(u"error"_s, Tone::error), QLineEdit::TrailingPosition);
}

} // namespace

EmailSetupSheet::EmailSetupSheet(EmailSettingsViewModel &model, const ProviderPages &pages,
                                 QWidget *parent)
    : QDialog(parent)
    , m_model(model)
    , m_apiKey(new QLineEdit)
    , m_fromEmail(new QLineEdit)
    , m_keyMark(errorMark(*m_apiKey))
    , m_addressMark(errorMark(*m_fromEmail))
    , m_error(new StatusLine)
{
    setWindowTitle(tr("Resend API Setup"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *const title = new QLabel(tr("Resend API Setup"));
    title->setFont(scaledFont(title->font(), 1.2, QFont::Bold));
    m_apiKey->setEchoMode(QLineEdit::Password);
    m_apiKey->setPlaceholderText(tr("re_xxxxxxxxx..."));
    m_fromEmail->setPlaceholderText(tr("digest@yourdomain.com"));
    auto *const form = makeForm();
    addRow(form, tr("API Key"), m_apiKey);
    addRow(form, tr("From Email"), m_fromEmail);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(12);
    column->addWidget(title);
    column->addLayout(steps());
    column->addLayout(form);
    column->addWidget(new Caption(tr("Must be a verified email in your Resend account")));
    column->addWidget(m_error);
    if (QWidget *const link = pages.link(ProviderPages::documentation, tr("Resend Documentation")))
        column->addWidget(link);
    column->addLayout(makeButtons());

    connect(&m_model, &EmailSettingsViewModel::changed, this, &EmailSetupSheet::refresh);
    connect(&m_model, &EmailSettingsViewModel::saved, this, &QDialog::accept);
    refresh();
    fit();
}

bool EmailSetupSheet::event(QEvent *event)
{
    const bool isHandled = QDialog::event(event);
    if (event->type() == QEvent::LayoutRequest)
        fit();
    return isHandled;
}

/// As high as the texts are at the sheet's width.
void EmailSetupSheet::fit()
{
    setFixedSize(sheetWidth, layout()->totalHeightForWidth(sheetWidth));
}

QLayout *EmailSetupSheet::makeButtons()
{
    auto *const cancel = new QPushButton(tr("Cancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto *const save = primaryButton(tr("Save"));
    save->setDefault(true);
    connect(save, &QPushButton::clicked, this, &EmailSetupSheet::save);
    auto *const line = new QHBoxLayout;
    line->addStretch();
    line->addWidget(cancel);
    line->addWidget(save);
    return line;
}

void EmailSetupSheet::save()
{
    m_hasTried = true;
    m_model.save(m_apiKey->text(), m_fromEmail->text());
    refresh(); // the same error again is no change
}

void EmailSetupSheet::refresh()
{
    const auto error = m_hasTried ? m_model.validationError() : std::nullopt;
    m_error->tell(Tone::error, error);
    m_keyMark->setVisible(error && configurationFault(m_apiKey->text(), rightAddress));
    m_addressMark->setVisible(error && !m_keyMark->isVisible());
}
