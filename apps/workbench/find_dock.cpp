// Rows keep no block: what is in the diagram when a row is chosen counts.
#include "workbench/find_dock.h"

#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

#include "qt/text_measure_qt.h"
#include "workbench/find_form.h"

namespace photrak {

FindDock::FindDock(Workbench& workbench, QWidget* parent)
    : QDockWidget(QStringLiteral("Find"), parent), workbench_(workbench) {
    setObjectName(QStringLiteral("Find"));
    auto* inside = new QWidget(this);
    auto* layout = new QVBoxLayout(inside);
    words_ = new QLineEdit(inside);
    words_->setAccessibleName(QStringLiteral("Name, type or parameter"));
    words_->setPlaceholderText(QStringLiteral("Name, type or parameter"));
    words_->setClearButtonEnabled(true);
    list_ = new QListWidget(inside);
    list_->setAccessibleName(QStringLiteral("Blocks found"));
    layout->addWidget(words_);
    layout->addWidget(list_);
    setWidget(inside);
    connect(words_, &QLineEdit::textChanged, this, [this] { Follow(); });
    connect(list_, &QListWidget::currentRowChanged, this, &FindDock::Choose);
    connect(this, &QDockWidget::visibilityChanged, this, [this] { Follow(); });
}

void FindDock::Follow() {
    const DiagramView* view = workbench_.Active();
    std::vector<std::string> rows;
    if (view && isVisible()) {
        const std::string words = words_->text().trimmed().toStdString();
        for (FoundBlock& found : FindBlocks(workbench_, *view->workspace, words)) {
            rows.push_back(std::move(found.text));
        }
    }
    if (rows == shown_) return;
    shown_ = std::move(rows);
    const QSignalBlocker quiet(list_);
    list_->clear();
    for (const std::string& row : shown_) list_->addItem(ToQString(row));
}

void FindDock::Choose(int row) {
    const DiagramView* view = workbench_.Active();
    if (row < 0 || !view || !select_) return;
    const auto found =
        FindBlocks(workbench_, *view->workspace, words_->text().trimmed().toStdString());
    const auto place = static_cast<std::size_t>(row);
    if (place < found.size() && found[place].text == shown_[place]) {
        select_(*found[place].component);
    }
}

}  // namespace photrak
