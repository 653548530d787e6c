// SPDX-License-Identifier: MIT
#include "FileSaveDialog.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QPointer>
#include <QSplitter>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace
{

constexpr int width = 720;
constexpr int height = 460;
constexpr int placesWidth = 150;

QString mimeType(ContentType type)
{
    switch (type) {
    case ContentType::plainText:
    case ContentType::text:
        return u"text/plain"_s;
    case ContentType::pdf:
        return u"application/pdf"_s;
    }
    Q_UNREACHABLE();
}

/// The kind of file as the dialog's one choice. Any text is offered by its pattern, because the
/// desktop knows many types of it.
QString nameFilter(const SaveRequest &request)
{
    const QString pattern = u"*."_s + request.suggestedName.section(u'.', -1);
    return QFileDialog::tr("Text") + u" ("_s + pattern + u')';
}

/// An open dialog, until the user has answered or its window is gone; closed when nobody waits for
/// it any more.
class Answer
{
public:
    explicit Answer(const SaveRequest &request)
        : m_dialog(new QFileDialog(QApplication::activeWindow()))
    {
        m_dialog->setWindowTitle(QFileDialog::tr("Save"));
        m_dialog->setAttribute(Qt::WA_DeleteOnClose);
        m_dialog->setAcceptMode(QFileDialog::AcceptSave);
        m_dialog->setFileMode(QFileDialog::AnyFile);
        m_dialog->setDefaultSuffix(request.suggestedName.section(u'.', -1));
        if (request.contentType == ContentType::text)
            m_dialog->setNameFilter(nameFilter(request));
        else
            m_dialog->setMimeTypeFilters({mimeType(request.contentType)});
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        m_dialog->setDirectory(QDir(folder).exists() ? folder : QDir::homePath());
        m_dialog->selectFile(request.suggestedName);
        // Where the desktop has no dialog of its own, Qt's cuts off the names of the places.
        m_dialog->resize(width, height);
        if (auto *const places = m_dialog->findChild<QSplitter *>())
            places->setSizes({placesWidth, width - placesWidth});
    }
    Answer(const Answer &) = delete;
    Answer &operator=(const Answer &) = delete;
    ~Answer()
    {
        forget();
        if (m_dialog)
            m_dialog->deleteLater();
    }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter)
    {
        const auto answered = [this, waiter](std::optional<QString> path) {
            forget();
            m_path = std::move(path);
            waiter.resume();
        };
        m_finished = QObject::connect(m_dialog, &QFileDialog::finished, m_dialog,
                                      [this, answered](int result) { answered(chosen(result)); });
        m_destroyed =
            QObject::connect(m_dialog, &QObject::destroyed, [answered] { answered(std::nullopt); });
        m_dialog->open();
        m_dialog->raise();
        m_dialog->activateWindow();
    }
    std::optional<QString> await_resume() { return m_path; }

private:
    std::optional<QString> chosen(int result) const
    {
        const QStringList files = m_dialog->selectedFiles();
        if (result != QDialog::Accepted || files.isEmpty())
            return std::nullopt;
        return files.first();
    }

    void forget()
    {
        QObject::disconnect(m_finished);
        QObject::disconnect(m_destroyed);
    }

    QPointer<QFileDialog> m_dialog;
    std::optional<QString> m_path;
    QMetaObject::Connection m_finished, m_destroyed;
};

} // namespace

Task<std::optional<QString>> FileSaveDialog::chooseFile(SaveRequest request)
{
    if (QApplication::activeModalWidget()) // who pressed a button behind it gets no second dialog
        co_return std::nullopt;
    Answer answer(request);
    std::optional<QString> path = co_await answer;
    co_return path;
}
