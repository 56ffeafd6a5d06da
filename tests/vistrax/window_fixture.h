// A viewer window without a display, files to show, and what a user's hands do.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>

#include "base/text.h"
#include "qt/text_measure_qt.h"
#include "support/temp_dir.h"
#include "vistrax/viewer_window.h"

namespace photrak {

class ViewerTest : public testing::Test {
  protected:
    ViewerTest() {
        window_.resize(900, 650);
        window_.show();
    }

    /// A plot of `rows` samples 1 ns apart, a + b * sample in W.
    QString WritePlot(const std::string& name, double a, double b, int rows = 101) {
        WriteData(name + ".sig", a, b, rows);
        return ToQString(
            dir_.Write(name + ".pcs", Concat("/xl\"Time (s)\"\n/yl\"Power (W)\"\n/tt\"", name,
                                             "\"\n", name, ".sig\n/lt\"line\"\n/nx1\n")));
    }
    void WriteData(const std::string& name, double a, double b, int rows) {
        std::string text;
        for (int i = 0; i < rows; ++i) text += Concat(i * 1e-9, " ", a + b * i, "\n");
        dir_.Write(name, text);
    }

    /// Lets events happen until something holds; false after ten seconds.
    static bool WaitFor(const std::function<bool()>& holds) {
        QElapsedTimer clock;
        clock.start();
        while (!holds()) {
            if (clock.elapsed() > 10'000) return false;
            QTest::qWait(10);
        }
        return true;
    }
    PlotWidget& Open(const QString& path) {
        window_.OpenFiles({path}, {});
        PlotWidget* widget = window_.Find(path);
        EXPECT_TRUE(
            WaitFor([&] { return widget->Pane().HasPlot() || !widget->Open().message.empty(); }));
        Settle(*widget);
        return *widget;
    }
    /// Until the picture is drawn for the size it has.
    static void Settle(PlotWidget& widget) {
        widget.Display().grab();
        EXPECT_TRUE(WaitFor([&] { return !widget.IsDrawing(); }));
    }

    static QPoint At(PlotWidget& widget, double x, double y) {  // parts of the pane
        const Rect& pane = widget.Pane().Layout().pane;
        return QPointF(pane.x + x * pane.width, pane.Bottom() - y * pane.height).toPoint();
    }
    static void Drag(PlotWidget& widget, QPoint from, QPoint to,
                     Qt::MouseButton button = Qt::LeftButton) {
        QTest::mousePress(&widget.Display(), button, {}, from);
        // QTest moves without a button held; a hand does not.
        QMouseEvent move(QEvent::MouseMove, to, widget.Display().mapToGlobal(to), Qt::NoButton,
                         button, {});
        QApplication::sendEvent(&widget.Display(), &move);
        QTest::mouseRelease(&widget.Display(), button, {}, to);
    }
    static void Wheel(PlotWidget& widget, QPoint at, int notches) {
        QWheelEvent event(at, widget.Display().mapToGlobal(at), {}, {0, 120 * notches}, {}, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget.Display(), &event);
    }
    void Key(PlotWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        widget.Display().setFocus();
        QTest::keyClick(&widget.Display(), key, modifiers);
    }
    static ValueRange Range(PlotWidget& widget, AxisId axis = AxisId::X) {
        return widget.Open().view.ScaleOf(axis).Range();
    }
    static std::string Dump(PlotWidget& widget) {
        Settle(widget);
        return DumpText(widget.Pane().Picture());
    }

    TempDir dir_;
    ViewerWindow window_{ThemeChoice::Light};
};

}  // namespace photrak
