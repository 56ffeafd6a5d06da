// One open plot in the window: a banner for messages, the drawing, the readout. What takes long is
// drawn and painted on a worker while the old picture stays.
#pragma once

#include <QImage>
#include <QLabel>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>

#include "plotting/plot_pane.h"
#include "qt/display_widget.h"
#include "vistrax/readout_view.h"

namespace photrak {

class PlotWidget : public QWidget, public DisplaySource {
    Q_OBJECT

  public:
    /// `open` is borrowed from the session.
    PlotWidget(OpenPlot& open, Theme theme, QWidget* parent = nullptr);
    ~PlotWidget() override;

    OpenPlot& Open() { return pane_.Open(); }
    PlotPane& Pane() { return pane_; }
    const PlotPane& Pane() const { return pane_; }
    DisplayWidget& Display() { return display_; }
    ReadoutView& TheReadout() { return readout_; }
    const QLabel& Banner() const { return banner_; }

    /// Another plot to draw, or the same with another message.
    void Show(std::shared_ptr<const Plot> plot);
    void ShowMessage();
    void SetTheme(Theme theme);
    /// Draws again what a command changed.
    void Update(Change change);
    bool IsDrawing() const { return busy_; }

    const Drawing& Picture(PageSize size, const TextMeasure& measure) override;
    bool IsBusy() const override { return busy_; }
    void Pointer(const PointerInput& input) override;
    void Wheel(const WheelInput& input) override;
    PointerShape Shape(Point at) override { return pane_.Shape(at); }
    std::string Name() override;

  Q_SIGNALS:
    void Changed();  // view, cursors or curves
    void Pointed(const QString& place);
    void ContextMenuWanted(const QPoint& global);
    void Drawn();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void PlaceBanner();
    void StartDrawing(PageSize size);
    void TakeDrawn(const std::shared_ptr<PlotPicture>& picture, const QImage& image, int number);

    PlotPane pane_;
    Theme theme_;
    DisplayWidget display_;
    ReadoutView readout_;
    QLabel banner_;
    Drawing note_;  // while there is nothing to draw yet
    bool stale_ = true, busy_ = false;
    PageSize drawnSize_;
    QTimer measure_;  // measures are taken when the view rests
    int number_ = 0;  // of the drawing under way; older ones are dropped
    QThreadPool pool_;
};

}  // namespace photrak
