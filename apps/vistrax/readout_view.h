// The table below a plot: cursors, differences, slopes, and lines of measures. Always there, so
// that nothing jumps when a cursor is put. A narrow one shows the table only while there are
// cursors.
#pragma once

#include <QLabel>
#include <QTableWidget>
#include <QWidget>

#include "plotting/plot_pane.h"

namespace photrak {

class ReadoutView : public QWidget {
    Q_OBJECT

  public:
    explicit ReadoutView(QWidget* parent = nullptr);

    /// Cursors and values under them.
    void ShowCursors(const Plot& plot, const PlotView& view, const Cursors& cursors);
    /// What is measured without cursors; slower.
    void ShowMeasures(const Plot& plot, const PlotView& view);
    void Clear();

    QSize sizeHint() const override { return {400, 132}; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void ChooseParts();
    void SetRow(int row, const QStringList& cells);

    QTableWidget table_;
    QLabel measures_;
    QWidget* measuresArea_ = nullptr;
    bool anyCursor_ = false;
};

}  // namespace photrak
