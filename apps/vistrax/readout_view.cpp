#include "vistrax/readout_view.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollArea>

#include "plotting/axis_label.h"
#include "plotting/measures.h"
#include "qt/text_measure_qt.h"

namespace photrak {
namespace {

constexpr std::size_t mostRows = 200;

QString Quantity(std::string_view label, const char* otherwise) {
    const std::string quantity = SplitLabel(label).quantity;
    return quantity.empty() ? QString::fromLatin1(otherwise) : ToQString(quantity);
}

}  // namespace

ReadoutView::ReadoutView(QWidget* parent) : QWidget(parent) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 0, 8, 8);
    layout->setSpacing(8);
    table_.setColumnCount(5);
    table_.setHorizontalHeaderLabels(
        {tr("Cursor"), tr("A"), tr("B"), tr("B \u2212 A"), tr("1/\u0394, slope")});
    table_.verticalHeader()->hide();
    table_.verticalHeader()->setDefaultSectionSize(20);
    // The names take what the numbers leave.
    table_.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_.horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table_.horizontalHeader()->setMinimumSectionSize(64);
    table_.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table_.horizontalHeader()->setHighlightSections(false);
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setShowGrid(false);
    table_.setAlternatingRowColors(true);
    table_.setAccessibleName(tr("Cursors and values"));
    table_.setTabKeyNavigation(false);
    table_.setFocusPolicy(Qt::TabFocus);  // a click leaves the keys with the plot
    layout->addWidget(&table_, 3);
    measures_.setTextFormat(Qt::PlainText);
    measures_.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    measures_.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    measures_.setMargin(6);
    measures_.setAccessibleName(tr("Measures"));
    auto* area = new QScrollArea;
    area->setWidget(&measures_);
    area->setWidgetResizable(true);
    area->setBackgroundRole(QPalette::Base);
    area->setAccessibleName(tr("Measures"));
    layout->addWidget(area, 2);
    measuresArea_ = area;
    setFixedHeight(sizeHint().height());
}

void ReadoutView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    ChooseParts();
}

void ReadoutView::ChooseParts() {
    constexpr int narrow = 660;
    table_.setVisible(width() >= narrow || anyCursor_);
    measuresArea_->setVisible(width() >= narrow || !anyCursor_);
}

void ReadoutView::SetRow(int row, const QStringList& cells) {
    for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
        QTableWidgetItem* item = table_.item(row, column);
        if (!item) {
            item = new QTableWidgetItem;
            const auto side = column == 0 ? Qt::AlignLeft : Qt::AlignRight;
            item->setTextAlignment(side | Qt::AlignVCenter);
            table_.setItem(row, column, item);
        }
        item->setText(cells[column]);
        item->setToolTip(cells[column].toHtmlEscaped());
    }
}

void ReadoutView::ShowCursors(const Plot& plot, const PlotView& view, const Cursors& cursors) {
    const Readout readout = MakeReadout(plot, view, cursors, mostRows);
    QList<QStringList> rows;
    const auto add = [&](const QString& name, std::initializer_list<std::string_view> texts) {
        QStringList row{name};
        for (const std::string_view text : texts) row.append(ToQString(text));
        rows.append(row);
    };
    add(Quantity(plot.spec.xLabel, "x"),
        {readout.xA, readout.xB, readout.xDifference, readout.xInverse});
    if (!readout.yA.empty() || !readout.yB.empty())
        add(Quantity(plot.spec.yLabel, "y"), {readout.yA, readout.yB, readout.yDifference, ""});
    for (const ReadoutRow& row : readout.rows) {
        add(ToQString(row.name), {row.a, row.b, row.difference, row.slope});
    }
    anyCursor_ = cursors.x[0] || cursors.x[1] || cursors.y[0] || cursors.y[1];
    ChooseParts();
    table_.setRowCount(static_cast<int>(rows.size()));
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) SetRow(i, rows[i]);
}

void ReadoutView::ShowMeasures(const Plot& plot, const PlotView& view) {
    QStringList lines;
    for (const std::string& note : plot.notes)
        lines.append(QStringLiteral("\u26A0 ") + ToQString(note));
    for (const std::string& line : MeasureLines(plot, view)) lines.append(ToQString(line));
    if (lines.isEmpty())
        lines.append(tr("Click puts cursor A, Ctrl+click cursor B; Esc takes them off."));
    measures_.setText(lines.join(QLatin1Char('\n')));
}

void ReadoutView::Clear() {
    table_.setRowCount(0);
    measures_.clear();
}

}  // namespace photrak
