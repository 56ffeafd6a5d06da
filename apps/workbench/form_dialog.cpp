// One layout for all records: a grid of labels and editors (with several columns where the record
// has them), then table, list, note, the hint of the editor in focus, buttons.
#include "workbench/form_dialog.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace photrak {
namespace {

constexpr int rowHeight = 30, tablePane = 370, rhythm = 8;  // pixels

QString Text(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QTableWidgetItem* FixedItem(const std::string& text, bool number) {
    auto* item = new QTableWidgetItem(Text(text));
    item->setFlags(Qt::ItemIsEnabled);
    if (number) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

/// A sign in front and a frame around it: color never speaks alone.
QString FaultStyle(bool fault) {
    return fault ? QStringLiteral("border: 2px solid #c62828; padding: 1px;") : QString();
}

QString HintText(const std::string& hint, const std::string& fault) {
    if (fault.empty()) return Text(hint);
    const QString marked = QStringLiteral("\u26a0 ") + Text(fault);
    return hint.empty() ? marked : marked + QStringLiteral("  \u00b7  ") + Text(hint);
}

}  // namespace

FormDialog::FormDialog(Form& form, PushButton push, QWidget* parent)
    : QDialog(parent), form_(form), push_(std::move(push)) {
    setObjectName(Text(form.kind));
    setWindowTitle(Text(form.title));
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(rhythm);
    auto* grid = new QGridLayout;
    grid->setVerticalSpacing(rhythm);
    grid->setHorizontalSpacing(2 * rhythm);
    const bool hasColumns =
        std::ranges::any_of(form.fields, [](const FormField& f) { return !f.column.empty(); });
    hasColumns ? BuildColumns(*grid) : BuildFields(*grid);
    layout->addLayout(grid);
    if (!form.tables.empty()) BuildTable();
    if (!form.lists.empty()) BuildList();
    note_ = new QLabel(this);
    note_->setTextFormat(Qt::PlainText);
    layout->addWidget(note_);
    hint_ = new QLabel(this);
    hint_->setTextFormat(Qt::PlainText);
    hint_->setWordWrap(true);
    hint_->setFixedHeight(2 * fontMetrics().lineSpacing());
    hint_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    hint_->setAccessibleName(QStringLiteral("Hint"));
    const bool hasEditors = !editors_.empty() || table_;
    hint_->setVisible(hasEditors);
    layout->addWidget(hint_);
    layout->addStretch(table_ || list_ ? 0 : 1);
    BuildButtons();
    Refresh();
    FitToContents();
    // The first value to type, so that its hint shows; the name of a block is seldom changed.
    if (rows_.size() > 1)
        (rows_[1].value.line ? static_cast<QWidget*>(rows_[1].value.line) : rows_[1].value.choice)
            ->setFocus();
    // Where nothing can be typed yet, the button that Enter presses.
    const bool canType = table_ || std::ranges::any_of(form_.fields, &FormField::enabled);
    for (QPushButton* button : buttons_) {
        if (!canType && button->isDefault()) button->setFocus();
    }
}

FormDialog::Editor FormDialog::MakeEditor(FieldKind kind, const std::string& name,
                                          std::function<void(QString)> edited) {
    const auto hand = [this, edited = std::move(edited)](const QString& text) {
        if (refreshing_ || detached_) return;
        edited(text);
        Refresh();
    };
    Editor editor;
    QWidget* widget = nullptr;
    if (kind == FieldKind::Choice) {
        editor.choice = new QComboBox(this);
        connect(editor.choice, &QComboBox::textActivated, this, hand);
        widget = editor.choice;
    } else {
        editor.line = new QLineEdit(this);
        if (kind != FieldKind::Text) editor.line->setAlignment(Qt::AlignRight);
        connect(editor.line, &QLineEdit::textEdited, this, hand);
        widget = editor.line;
    }
    widget->setAccessibleName(Text(name));
    widget->setObjectName(Text(name));
    widget->installEventFilter(this);
    return editor;
}

void FormDialog::BuildFields(QGridLayout& grid) {
    for (std::size_t i = 0; i < form_.fields.size(); ++i) {
        const FormField& field = form_.fields[i];
        const auto edited = [this, i](const QString& text) {
            const FormField& target = form_.fields[i];
            form_.Edit(target.label, target.column, text.toStdString());
        };
        Editor editor = MakeEditor(field.kind, field.label, edited);
        QWidget* widget = editor.line ? static_cast<QWidget*>(editor.line) : editor.choice;
        auto* label = new QLabel(Text(field.label), this);
        label->setTextFormat(Qt::PlainText);
        label->setBuddy(widget);
        const int row = static_cast<int>(i);
        grid.addWidget(label, row, 0);
        grid.addWidget(widget, row, 1);
        editors_.push_back(editor);
    }
    grid.setColumnStretch(1, 1);
}

/// Column titles on top, a row for each label; a field without a column runs across all of them.
void FormDialog::BuildColumns(QGridLayout& grid) {
    std::vector<std::string> columns, labels;
    const auto place = [](std::vector<std::string>& names, const std::string& name) {
        const auto found = std::ranges::find(names, name);
        if (found != names.end()) return static_cast<int>(found - names.begin());
        names.push_back(name);
        return static_cast<int>(names.size()) - 1;
    };
    for (const FormField& field : form_.fields) {
        if (!field.column.empty()) place(columns, field.column);
    }
    for (std::size_t c = 0; c < columns.size(); ++c) {
        auto* title = new QLabel(Text(columns[c]), this);
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        grid.addWidget(title, 0, static_cast<int>(c) + 1);
        grid.setColumnStretch(static_cast<int>(c) + 1, 1);
    }
    for (std::size_t i = 0; i < form_.fields.size(); ++i) {
        const FormField& field = form_.fields[i];
        const auto edited = [this, i](const QString& text) {
            const FormField& target = form_.fields[i];
            form_.Edit(target.label, target.column, text.toStdString());
        };
        const std::string name =
            field.column.empty() ? field.label : field.column + ": " + field.label;
        const Editor editor = MakeEditor(field.kind, name, edited);
        QWidget* widget = editor.line ? static_cast<QWidget*>(editor.line) : editor.choice;
        const int known = static_cast<int>(labels.size());
        const int row = place(labels, field.label);
        if (row == known) {
            auto* label = new QLabel(Text(field.label), this);
            label->setTextFormat(Qt::PlainText);
            label->setBuddy(widget);
            grid.addWidget(label, row + 1, 0);
        }
        const int across = static_cast<int>(columns.size());
        if (field.column.empty()) {
            grid.addWidget(widget, row + 1, 1, 1, across);
        } else {
            grid.addWidget(widget, row + 1, place(columns, field.column) + 1);
        }
        editors_.push_back(editor);
    }
}

void FormDialog::BuildTable() {
    static const QStringList titles = {QStringLiteral("Parameter Name"),
                                       QStringLiteral("Value"),
                                       QStringLiteral("Min"),
                                       QStringLiteral("Max"),
                                       QStringLiteral("Std. Dev."),
                                       QStringLiteral("Distribution"),
                                       QStringLiteral("Units")};
    table_ = new QTableWidget(0, static_cast<int>(titles.size()), this);
    table_->setAccessibleName(QStringLiteral("Parameters"));
    table_->setHorizontalHeaderLabels(titles);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(rowHeight);
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->setFocusPolicy(Qt::NoFocus);
    table_->setTabKeyNavigation(false);  // Tab goes from editor to editor
    table_->setShowGrid(false);
    // What can be typed over stands out from what is told.
    table_->viewport()->setBackgroundRole(QPalette::Window);
    table_->setMinimumHeight(tablePane + table_->horizontalHeader()->sizeHint().height());
    table_->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    table_->verticalScrollBar()->setPageStep(4);
    layout()->addWidget(table_);
}

void FormDialog::BuildRow(int row) {
    const auto place = static_cast<std::size_t>(row);
    const FormRow& record = form_.tables.front().rows[place];
    const auto edits = [this, place](const char* column) {
        return [this, place, column](const QString& text) {
            // The name is taken anew: a load may have changed the rows.
            const std::vector<FormRow>& rows = form_.tables.front().rows;
            if (place < rows.size()) form_.EditRow(rows[place].name, column, text.toStdString());
        };
    };
    const auto add = [&](Editor& target, int column, const char* title, bool choice) {
        target = MakeEditor(choice ? FieldKind::Choice : FieldKind::Text,
                            record.name + ", " + title, edits(title));
        table_->setCellWidget(row, column,
                              target.line ? static_cast<QWidget*>(target.line) : target.choice);
    };
    RowEditors editors;
    add(editors.value, 1, "Value", record.isChoice);
    if (record.hasDeviation) {
        add(editors.deviation, 4, "Std. Dev.", false);
        add(editors.distribution, 5, "Distribution", true);
    }
    rows_.push_back(editors);
}

void FormDialog::BuildList() {
    list_ = new QListWidget(this);
    list_->setAccessibleName(QStringLiteral("List"));
    list_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    list_->setUniformItemSizes(true);
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (refreshing_ || detached_ || row < 0) return;
        form_.Select(row + 1);
        Refresh();
    });
    layout()->addWidget(list_);
}

void FormDialog::BuildButtons() {
    auto* box = new QHBoxLayout;
    box->addStretch(1);
    const bool hasOk =
        std::ranges::any_of(form_.buttons, [](const FormButton& b) { return b.label == "OK"; });
    for (const FormButton& button : form_.buttons) {
        auto* widget = new QPushButton(Text(button.label), this);
        widget->setObjectName(Text(button.label));
        const bool isDefault = button.label == "OK" || (!hasOk && buttons_.empty());
        widget->setAutoDefault(isDefault);
        widget->setDefault(isDefault);
        const std::string label = button.label;
        connect(widget, &QPushButton::clicked, this, [this, label] {
            if (!detached_) push_(label);
        });
        box->addWidget(widget);
        buttons_.push_back(widget);
    }
    static_cast<QVBoxLayout*>(layout())->addLayout(box);
}

void FormDialog::Show(Editor& editor, const std::string& text,
                      const std::vector<std::string>& choices, bool enabled,
                      const std::string& fault, const std::string& hint) {
    QWidget* widget = editor.line ? static_cast<QWidget*>(editor.line) : editor.choice;
    if (editor.line && editor.line->text() != Text(text)) editor.line->setText(Text(text));
    if (editor.choice) {
        QStringList words;
        for (const std::string& choice : choices) words << Text(choice);
        QStringList shown;
        for (int i = 0; i < editor.choice->count(); ++i) shown << editor.choice->itemText(i);
        if (shown != words) {
            editor.choice->clear();
            editor.choice->addItems(words);
        }
        editor.choice->setCurrentIndex(static_cast<int>(words.indexOf(Text(text))));
    }
    widget->setEnabled(enabled);
    const QString style = FaultStyle(!fault.empty());
    if (widget->styleSheet() != style) widget->setStyleSheet(style);
    const QString tip = HintText(hint, fault);
    widget->setAccessibleDescription(tip);
    hints_[widget] = tip.toStdString();
    if (widget->hasFocus()) hint_->setText(tip);
}

void FormDialog::RefreshTable() {
    static const std::vector<std::string> distributions(std::begin(distributionChoices),
                                                        std::end(distributionChoices));
    const std::vector<FormRow>& rows = form_.tables.front().rows;
    const int count = static_cast<int>(rows.size());
    if (table_->rowCount() != count) {
        table_->setRowCount(0);
        table_->setRowCount(count);
        rows_.clear();
        for (int row = 0; row < count; ++row) BuildRow(row);
    }
    for (int i = 0; i < count; ++i) {
        const FormRow& row = rows[static_cast<std::size_t>(i)];
        RowEditors& editors = rows_[static_cast<std::size_t>(i)];
        const std::pair<int, const std::string*> texts[] = {
            {0, &row.name}, {2, &row.least}, {3, &row.greatest}, {6, &row.units}};
        for (const auto& [column, text] : texts) {
            if (!table_->item(i, column)) {
                table_->setItem(i, column, FixedItem(*text, column == 2 || column == 3));
            }
            table_->item(i, column)->setText(Text(*text));
            table_->item(i, column)->setToolTip(Text(row.hint));
        }
        Show(editors.value, row.value, row.choices, true, row.fault, row.hint);
        if (!row.hasDeviation) continue;
        Show(editors.deviation, row.deviation, {}, true, row.deviationFault, row.hint);
        Show(editors.distribution, row.distribution, distributions, true, {}, row.hint);
    }
}

void FormDialog::RefreshList() {
    const FormList& record = form_.lists.front();
    const int count = static_cast<int>(record.rows.size());
    while (list_->count() > count) delete list_->takeItem(list_->count() - 1);
    for (int i = 0; i < count; ++i) {
        const QString text = Text(record.rows[static_cast<std::size_t>(i)]);
        if (i >= list_->count()) {
            list_->addItem(text);
        } else if (list_->item(i)->text() != text) {
            list_->item(i)->setText(text);
        }
    }
    list_->setEnabled(record.enabled);
    list_->setCurrentRow(record.selected - 1);
}

void FormDialog::RefreshFocus() {
    if (form_.focus.empty() || form_.focus == focus_) return;
    focus_ = form_.focus;
    for (std::size_t i = 0; i < form_.fields.size(); ++i) {
        if (form_.fields[i].label != form_.focus) continue;
        if (editors_[i].line) editors_[i].line->setFocus();
    }
}

void FormDialog::Refresh() {
    if (detached_) return;
    refreshing_ = true;
    setWindowTitle(Text(form_.title));
    for (std::size_t i = 0; i < form_.fields.size(); ++i) {
        const FormField& field = form_.fields[i];
        Show(editors_[i], field.text, field.choices, field.enabled, field.fault, field.hint);
    }
    if (table_) RefreshTable();
    if (list_) RefreshList();
    note_->setText(Text(form_.note));
    note_->setVisible(!form_.note.empty());
    for (std::size_t i = 0; i < form_.buttons.size(); ++i) {
        buttons_[i]->setEnabled(form_.buttons[i].enabled);
    }
    RefreshFocus();
    refreshing_ = false;
}

void FormDialog::ShowHint(const QObject* editor) {
    const auto found = hints_.find(editor);
    hint_->setText(found == hints_.end() ? QString() : Text(found->second));
}

void FormDialog::FitToContents() {
    if (!table_) {
        // No minimum of the dialog itself: it would take the place of what the parts need.
        static_cast<QVBoxLayout*>(layout())->addStrut(form_.lists.empty() ? 360 : 520);
        return;
    }
    const int letter = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const int widths[] = {26, 26, 11, 11, 11, 14, 14};
    int total = 0;
    for (int column = 0; column < table_->columnCount(); ++column) {
        const int width = letter * widths[column];
        table_->setColumnWidth(column, width);
        total += width;
    }
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setMinimumWidth(total + 4 * rhythm);
}

/// Brings an editor of the table that the keyboard went to into sight.
void FormDialog::ScrollTo(const QWidget* editor) {
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        const Editor* editors[] = {&rows_[row].value, &rows_[row].deviation,
                                   &rows_[row].distribution};
        const bool isHere = std::ranges::any_of(
            editors, [&](const Editor* e) { return e->line == editor || e->choice == editor; });
        if (isHere) table_->scrollTo(table_->model()->index(static_cast<int>(row), 1));
    }
}

bool FormDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        ShowHint(watched);
        ScrollTo(static_cast<const QWidget*>(watched));
    }
    // A wheel turn over a field that is not in use would change its value unseen.
    if (event->type() == QEvent::Wheel) {
        event->ignore();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void FormDialog::reject() {
    if (detached_) {
        QDialog::reject();
        return;
    }
    const bool hasCancel =
        std::ranges::any_of(form_.buttons, [](const FormButton& b) { return b.label == "Cancel"; });
    push_(hasCancel ? "Cancel" : "OK");
}

}  // namespace photrak
