// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

#include <memory>

class Caption;
class ExportViewModel;
class QCheckBox;
class QFormLayout;
class QPushButton;
class Spinner;

/// The window "Export Links": without a title bar, as large as its content. It can be moved by its
/// background.
class ExportView : public QDialog
{
    Q_OBJECT
public:
    explicit ExportView(std::shared_ptr<ExportViewModel> model, QWidget *parent = nullptr);
    ~ExportView() override;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QLayout *makeButtons();
    void refresh();

    std::shared_ptr<ExportViewModel> m_model;
    QFormLayout *m_form;
    Caption *m_count;
    QPushButton *m_export = nullptr;
    Spinner *m_spinner = nullptr;
};
