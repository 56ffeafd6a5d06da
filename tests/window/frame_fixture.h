// A frame without a display, and hands that push, click, drag and open.
#pragma once

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QToolButton>
#include <filesystem>
#include <gtest/gtest.h>

#include "base/text.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "qt/text_measure_qt.h"
#include "support/paths.h"
#include "support/temp_dir.h"
#include "workbench/diagram_window.h"
#include "workbench/frame_window.h"

namespace photrak {

/// Boxes and file dialogs answer themselves and are written down.
struct QuietDesktop : WindowDesktop {
    void Box(BoxKind, std::string_view, std::string_view text) override {
        boxes.emplace_back(text);
    }
    Answer Query(std::string_view, std::string_view text) override {
        boxes.emplace_back(text);
        return answer;
    }
    std::optional<std::string> ChooseFile(const FileRequest&) override { return file; }
    bool StartViewer(const std::string& name, const std::string&) override {
        viewed.push_back(name);
        return true;
    }
    bool StartEditor(const std::string& name, const std::string&) override {
        viewed.push_back("edit " + name);
        return true;
    }
    void ShowHelp(std::int32_t topic) override { viewed.push_back(Concat("help ", topic)); }
    Answer answer = Answer::Yes;
    std::vector<std::string> boxes, viewed;
    std::optional<std::string> file;
};

class FrameTest : public testing::Test {
  protected:
    FrameTest() {
        // What the user of the tests has set is left alone.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, ToQString(dir_.Path()));
        EXPECT_TRUE(StartWorkbench(workbench_));
        frame_ = std::make_unique<FrameWindow>(workbench_, desktop_);
        frame_->resize(1000, 700);
        frame_->show();
    }
    ~FrameTest() override {
        while (workbench_.run.active) QTest::qWait(10);
        frame_.reset();
    }

    std::string PathOf(const std::string& name) const { return dir_.Path() + name; }
    static bool WaitFor(const std::function<bool()>& holds) {
        QElapsedTimer clock;
        clock.start();
        while (!holds()) {
            if (clock.elapsed() > 20'000) return false;
            QTest::qWait(10);
        }
        return true;
    }
    /// Opens a copy of an example.
    DiagramView& Open(const std::string& name) {
        const std::string from = SourceDir() + "/examples/" + name;
        EXPECT_TRUE(CopyWholeFile(from, PathOf(name)));
        frame_->OpenFiles({ToQString(PathOf(name))});
        return *workbench_.Active();
    }
    DiagramWindow& Canvas() {
        const auto all = frame_->findChildren<QMdiSubWindow*>();
        for (QMdiSubWindow* child : all) {
            auto* canvas = dynamic_cast<DiagramWindow*>(child->widget());
            if (canvas && &canvas->View() == workbench_.Active()) return *canvas;
        }
        throw std::runtime_error("no canvas in front");
    }
    void Trigger(const char* name) {
        auto* action = frame_->findChild<QAction*>(QString::fromLatin1(name));
        ASSERT_NE(action, nullptr) << name;
        action->trigger();
    }
    void Push(const char* tip) {
        auto* button = frame_->findChild<QToolButton*>(QString::fromLatin1(tip));
        ASSERT_NE(button, nullptr) << tip;
        button->click();
    }
    /// A key with its modifiers, on the canvas in front.
    void Press(const QKeySequence& keys) {
        QApplication::setActiveWindow(frame_.get());
        const QKeyCombination key = keys[0];
        QTest::keyClick(Canvas().viewport(), key.key(), key.keyboardModifiers());
    }
    void Click(int x, int y, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(Canvas().viewport(), button, {}, {x, y});
    }
    void Drag(QPoint from, QPoint to) {
        QWidget* target = Canvas().viewport();
        QTest::mousePress(target, Qt::LeftButton, {}, from);
        for (const QPoint at : {(from + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, at, target->mapToGlobal(at), Qt::NoButton,
                             Qt::LeftButton, {});
            QApplication::sendEvent(target, &move);
        }
        QTest::mouseRelease(target, Qt::LeftButton, {}, to);
    }
    FormDialog* Dialog(const char* kind) {
        return frame_->findChild<FormDialog*>(QString::fromLatin1(kind));
    }
    static void PushIn(FormDialog& dialog, const char* label) {
        auto* button = dialog.findChild<QPushButton*>(QString::fromLatin1(label));
        ASSERT_NE(button, nullptr) << label;
        button->click();
    }

    TempDir dir_;
    QuietDesktop desktop_;
    Workbench workbench_{desktop_,
                         {BuiltInModels(), HasBlockTest, TestByStages},
                         BinaryDir() + "/bin/",
                         std::filesystem::current_path().string()};
    std::unique_ptr<FrameWindow> frame_;
};

}  // namespace photrak
