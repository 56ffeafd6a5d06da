// Shows a dialog record: fields, table, list, buttons. What is typed goes to the record at once,
// and after each edit or press the dialog shows what the record says. It holds no rule of its own.
#pragma once

#include <QDialog>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "workbench/form.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace photrak {

class FormDialog : public QDialog {
  public:
    /// Presses a button of the record; the dialog may be gone when it returns.
    using PushButton = std::function<void(const std::string& label)>;

    FormDialog(Form& form, PushButton push, QWidget* parent);

    const Form& Shown() const { return form_; }
    /// Brings all widgets to what the record says; a text in which someone types keeps its cursor.
    void Refresh();
    /// The record has left: nothing of it is touched any more.
    void Detach() { detached_ = true; }

    /// Escape and the window's own close button press Cancel, or OK where there is no Cancel.
    void reject() override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Editor {  // of a field or of a cell of the table
        QLineEdit* line = nullptr;
        QComboBox* choice = nullptr;
    };
    struct RowEditors {
        Editor value, deviation, distribution;
    };

    void BuildFields(QGridLayout& grid);
    void BuildColumns(QGridLayout& grid);
    void BuildTable();
    void BuildRow(int row);
    void BuildList();
    void BuildButtons();
    Editor MakeEditor(FieldKind kind, const std::string& name, std::function<void(QString)> edited);
    void Show(Editor& editor, const std::string& text, const std::vector<std::string>& choices,
              bool enabled, const std::string& fault, const std::string& hint);
    void RefreshTable();
    void RefreshList();
    void RefreshFocus();
    void ShowHint(const QObject* editor);
    void ScrollTo(const QWidget* editor);
    void FitToContents();

    Form& form_;
    PushButton push_;
    bool detached_ = false, refreshing_ = false;
    std::string focus_;  // that the record asked for last
    std::vector<Editor> editors_;
    std::vector<RowEditors> rows_;
    std::map<const QObject*, std::string> hints_;
    std::vector<QPushButton*> buttons_;
    QTableWidget* table_ = nullptr;
    QListWidget* list_ = nullptr;
    QLabel* note_ = nullptr;
    QLabel* hint_ = nullptr;
};

}  // namespace photrak
