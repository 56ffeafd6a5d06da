#include "vistrax/plot_widget.h"

#include <QPainter>
#include <QVBoxLayout>

#include "base/text.h"
#include "qt/painter.h"
#include "qt/theme.h"

namespace photrak {
namespace {

const QtTextMeasure& Measure() {
    static const QtTextMeasure measure;
    return measure;
}

QImage Painted(const Drawing& drawing, Theme theme, QSize size, double ratio) {
    QImage image(size, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(ColorFor(Role::Paper, theme));
    QPainter painter(&image);
    PaintItems(painter, drawing.items, theme);
    return image;
}

}  // namespace

PlotWidget::PlotWidget(OpenPlot& open, Theme theme, QWidget* parent)
    : QWidget(parent), pane_(open), theme_(theme), display_(*this) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    banner_.setTextFormat(Qt::PlainText);
    banner_.setWordWrap(true);
    banner_.setMargin(6);
    banner_.setAutoFillBackground(true);
    banner_.setParent(this);
    banner_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    banner_.setAccessibleName(tr("Message"));
    layout->addWidget(&display_, 1);
    layout->addWidget(&readout_);
    banner_.raise();
    pool_.setMaxThreadCount(1);
    constexpr int restMilliseconds = 120;
    measure_.setSingleShot(true);
    measure_.setInterval(restMilliseconds);
    connect(&measure_, &QTimer::timeout, this, [this] {
        if (pane_.HasPlot()) readout_.ShowMeasures(pane_.Shown(), Open().view);
    });
    SetTheme(theme);
    ShowMessage();
}

PlotWidget::~PlotWidget() {
    pool_.waitForDone();
}

void PlotWidget::SetTheme(Theme theme) {
    theme_ = theme;
    stale_ = true;
    display_.SetTheme(theme);
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, ColorFor(Role::Fault, theme));
    banner_.setPalette(palette);
}

void PlotWidget::Show(std::shared_ptr<const Plot> plot) {
    pane_.Show(std::move(plot));
    setAccessibleName(ToQString(Open().plot.name));
    display_.setAccessibleName(ToQString(Name()));
    ShowMessage();
    Update(Change::View);
}

void PlotWidget::ShowMessage() {
    // A sign besides the color.
    banner_.setText(QStringLiteral("\u26A0  ") + ToQString(Open().message));
    banner_.setVisible(!Open().message.empty());
    PlaceBanner();
}

/// Over the drawing, so that nothing moves when a message comes and goes while files are written:
/// beside the file's name where there is a plot, along the upper edge where there is none.
void PlotWidget::PlaceBanner() {
    const QRect area = display_.geometry();
    if (!pane_.HasPlot()) {
        banner_.setGeometry(0, area.top(), area.width(), banner_.heightForWidth(area.width()));
        return;
    }
    const int width = std::min(banner_.fontMetrics().horizontalAdvance(banner_.text()) + 16,
                               area.width() * 3 / 5);
    const int height = banner_.heightForWidth(width);
    banner_.setGeometry(0, area.bottom() + 1 - height, width, height);
}

void PlotWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    PlaceBanner();
}

void PlotWidget::Update(Change change) {
    if (change == Change::Nothing) return;
    if (change == Change::View) stale_ = true;
    display_.Redraw(change == Change::View ? DisplayWidget::Layer::Base
                                           : DisplayWidget::Layer::Overlay);
    if (pane_.HasPlot()) {
        readout_.ShowCursors(pane_.Shown(), Open().view, Open().cursors);
        if (change == Change::View) measure_.start();
    }
    Q_EMIT Changed();
}

std::string PlotWidget::Name() {
    const Plot& plot = Open().plot;
    return plot.spec.title.empty() ? plot.name : Concat(plot.spec.title, ", ", plot.name);
}

const Drawing& PlotWidget::Picture(PageSize size, const TextMeasure& measure) {
    const bool sameSize = size.width == drawnSize_.width && size.height == drawnSize_.height;
    if (!pane_.HasPlot()) {
        note_ = {};
        note_.size = size;
        note_.Add(TextItem{{0.5 * size.width, 0.5 * size.height},
                           Open().message.empty() ? "reading" : "nothing to show yet",
                           13.0,
                           Role::Dim,
                           Anchor::Middle,
                           Weight::Regular,
                           false});
        return note_;
    }
    if (!stale_ && sameSize) return pane_.Picture();
    stale_ = false;
    drawnSize_ = size;
    if (pane_.IsHeavy()) {
        StartDrawing(size);
    } else {
        ++number_;
        busy_ = false;
        pane_.Take(pane_.MakeJob(size, measure).Draw());
        Q_EMIT Drawn();
    }
    return pane_.Picture();
}

void PlotWidget::StartDrawing(PageSize size) {
    busy_ = true;
    const int number = ++number_;
    pool_.clear();  // what waits there is older
    pool_.start([this, number, job = pane_.MakeJob(size, Measure()), theme = theme_,
                 pixels = display_.size() * display_.devicePixelRatioF(),
                 ratio = display_.devicePixelRatioF()] {
        const auto picture = std::make_shared<PlotPicture>(job.Draw());
        const QImage image = Painted(picture->drawing, theme, pixels, ratio);
        QMetaObject::invokeMethod(
            this, [this, picture, image, number] { TakeDrawn(picture, image, number); },
            Qt::QueuedConnection);
    });
}

void PlotWidget::TakeDrawn(const std::shared_ptr<PlotPicture>& picture, const QImage& image,
                           int number) {
    if (number != number_) return;
    busy_ = false;
    pane_.Take(std::move(*picture));
    display_.SetBase(QPixmap::fromImage(image));
    Q_EMIT Drawn();
}

void PlotWidget::Pointer(const PointerInput& input) {
    Update(pane_.Pointer(input));
    Q_EMIT Pointed(ToQString(pane_.PlaceText(input.at)));
    if (input.action == PointerAction::Release && input.button == PointerButton::Right)
        Q_EMIT ContextMenuWanted(display_.mapToGlobal(
            QPoint(static_cast<int>(input.at.x), static_cast<int>(input.at.y))));
}

void PlotWidget::Wheel(const WheelInput& input) {
    Update(pane_.Wheel(input));
}

}  // namespace photrak
