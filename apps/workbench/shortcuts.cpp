#include "workbench/shortcuts.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QTableWidget>
#include <QVBoxLayout>

#include "base/text.h"
#include "qt/text_measure_qt.h"
#include "workbench/commands.h"

namespace photrak {
namespace {

/// Gestures of the canvas, which no menu has.
constexpr std::pair<const char*, const char*> gestureRows[] = {
    {"Ctrl+Wheel", "Zoom at the pointer"},
    {"Middle button", "Move the canvas"},
    {"Ctrl++, Ctrl+-", "Zoom in, out"},
    {"Ctrl+0", "Zoom 100%"},
    {"Home", "Whole diagram"},
    {"Arrows", "Move the selection by a cell"},
    {"Shift+Click", "Add to the selection"},
    {"Right click, double click", "Properties of a block"},
    {"A letter", "Pick a model by name"},
    {"Esc", "Cancel a drag"},
};

}  // namespace

std::vector<std::pair<QString, QString>> ShortcutRows() {
    std::vector<std::pair<QString, QString>> rows;
    for (const Command& command : Commands()) {
        QStringList keys;
        for (const std::string_view key : command.keys) {
            keys << QKeySequence(ToQString(key)).toString(QKeySequence::NativeText);
        }
        if (keys.isEmpty()) continue;
        rows.emplace_back(keys.join(QStringLiteral(", ")),
                          ToQString(Concat(command.menu, " ", command.entry)));
    }
    for (const auto& [keys, what] : gestureRows) {
        rows.emplace_back(QString::fromLatin1(keys), QString::fromLatin1(what));
    }
    return rows;
}

void ShowShortcuts(QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("Shortcuts"));
    dialog.setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    auto* layout = new QVBoxLayout(&dialog);
    const auto rows = ShortcutRows();
    auto* table = new QTableWidget(static_cast<int>(rows.size()), 2, &dialog);
    table->setAccessibleName(QStringLiteral("Keyboard shortcuts"));
    table->setHorizontalHeaderLabels({QStringLiteral("Key"), QStringLiteral("What it does")});
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    for (int row = 0; row < table->rowCount(); ++row) {
        const auto& [keys, what] = rows[static_cast<std::size_t>(row)];
        table->setItem(row, 0, new QTableWidgetItem(keys));
        table->setItem(row, 1, new QTableWidgetItem(what));
    }
    table->resizeColumnsToContents();
    table->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(table);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    dialog.resize(460, 520);
    dialog.exec();
}

}  // namespace photrak
