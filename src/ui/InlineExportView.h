// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <memory>

class InlineExportViewModel;
class QLabel;
class QPushButton;

/// The compact export screen within the panel.
class InlineExportView : public QWidget
{
    Q_OBJECT
public:
    explicit InlineExportView(std::shared_ptr<InlineExportViewModel> model,
                              QWidget *parent = nullptr);

Q_SIGNALS:
    /// The screen is to be left: the user cancelled, or the file is written.
    void done();

private:
    QWidget *makeSummarizing();
    QLayout *makeButtons();
    void refresh();

    std::shared_ptr<InlineExportViewModel> m_model;
    QLabel *m_count;
    QWidget *m_summarizing = nullptr;
    QPushButton *m_export = nullptr;
};
