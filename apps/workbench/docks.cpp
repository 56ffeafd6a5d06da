// Plots are read and drawn by workers of the thread pool; the interface never waits for a file.
#include "workbench/docks.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QThreadPool>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "plotting/plot_drawing.h"
#include "qt/text_measure_qt.h"
#include "workbench/edit_commands.h"
#include "workbench/look.h"

namespace photrak {
namespace {

constexpr int thumbnailWidth = 240, thumbnailHeight = 150, followInterval = 500;  // px, ms
constexpr qint64 mostLogBytes = 1 << 20;
constexpr PageSize drawnSize{480.0, 300.0};

}  // namespace

ResultsDock::ResultsDock(Workbench& workbench, QWidget* parent)
    : QDockWidget(QStringLiteral("Results"), parent), workbench_(workbench) {
    setObjectName(QStringLiteral("Results"));
    list_ = new QListWidget(this);
    list_->setAccessibleName(QStringLiteral("Results of the last run"));
    list_->setViewMode(QListView::IconMode);
    list_->setIconSize({thumbnailWidth, thumbnailHeight});
    list_->setResizeMode(QListView::Adjust);
    list_->setMovement(QListView::Static);
    list_->setSpacing(6);
    list_->setMinimumWidth(thumbnailWidth + 40);
    readings_ = new QLabel(this);
    readings_->setAccessibleName(QStringLiteral("Error rates of the last run"));
    readings_->setTextFormat(Qt::PlainText);
    readings_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    readings_->setContentsMargins(6, 6, 6, 2);
    readings_->hide();
    auto* inside = new QWidget(this);
    auto* layout = new QVBoxLayout(inside);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(readings_);
    layout->addWidget(list_);
    setWidget(inside);
    connect(list_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        const std::string file = item->text().toStdString();
        if (!workbench_.desktop.StartViewer(file, directory_)) {
            workbench_.ErrorBox("Cannot start '" + file + "'");
        }
    });
    Fill();
}

void ResultsDock::Show(const DiagramView* view) {
    std::vector<std::string> files;
    if (view && !view->running) {
        for (const auto& component : view->workspace->components) {
            for (const std::string& file : component->plots) {
                if (std::ranges::find(files, file) == files.end()) files.push_back(file);
            }
        }
    }
    const QString readings = view && !view->running ? ToQString(view->readings) : QString();
    if (readings_->text() != readings) readings_->setText(readings);
    readings_->setVisible(!readings.isEmpty());
    const std::string directory = view ? view->directory : std::string();
    if (files == files_ && directory == directory_) return;
    files_ = std::move(files);
    directory_ = directory;
    Fill();
}

bool ResultsDock::RunEnded() {
    Fill();
    return !files_.empty() || !readings_->text().isEmpty();
}

void ResultsDock::Fill() {
    ++*round_;
    list_->clear();
    for (std::size_t i = 0; i < files_.size(); ++i) {
        auto* item = new QListWidgetItem(ToQString(files_[i]), list_);
        item->setSizeHint({thumbnailWidth + 12, thumbnailHeight + 28});
        item->setToolTip(QStringLiteral("Double click opens it in the viewer"));
        Draw(static_cast<int>(i), directory_ + "/" + files_[i]);
    }
    if (!files_.empty()) return;
    auto* hint = new QListWidgetItem(QStringLiteral("Plots of a run appear here."), list_);
    hint->setFlags(Qt::NoItemFlags);
}

void ResultsDock::Draw(int row, const std::string& path) {
    QThreadPool::globalInstance()->start([this, row, path, round = round_, now = *round_] {
        auto plot = std::make_shared<Plot>();
        std::string error;
        const bool read = LoadPlot(path, *plot, error);
        auto picture = std::make_shared<PlotPicture>();
        if (read) {
            PlotOptions options;
            options.size = drawnSize;
            options.fileName = false;
            *picture = DrawPlot(*plot, PlotView(*plot), options);
        }
        const auto show = [this, row, round, now, read, picture, error] {
            if (*round != now || row >= list_->count()) return;
            QListWidgetItem* item = list_->item(row);
            if (read) {
                item->setIcon(Thumbnail(picture->drawing, {thumbnailWidth, thumbnailHeight},
                                        devicePixelRatioF()));
            } else {
                item->setToolTip(ToQString(error).toHtmlEscaped());
            }
        };
        QMetaObject::invokeMethod(qApp, show, Qt::QueuedConnection);
    });
}

LogDock::LogDock(QWidget* parent) : QDockWidget(QStringLiteral("Log"), parent) {
    setObjectName(QStringLiteral("Log"));
    text_ = new QPlainTextEdit(this);
    text_->setAccessibleName(QStringLiteral("Log"));
    text_->setReadOnly(true);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->viewport()->installEventFilter(this);
    setWidget(text_);
    timer_ = new QTimer(this);
    connect(timer_, &QTimer::timeout, this, &LogDock::Read);
    timer_->start(followInterval);
}

void LogDock::Follow(const std::string& directory) {
    if (directory == directory_) return;
    directory_ = directory;
    shown_ = -1;
    Read();
}

void LogDock::Read() {
    if (directory_.empty() || isHidden()) return;
    QFile file(ToQString(directory_ + "/log.txt"));
    const QFileInfo info(file);
    const qint64 time = info.lastModified().toMSecsSinceEpoch();
    if (info.size() == shown_ && time == time_) return;
    shown_ = info.size();
    time_ = time;
    if (!file.open(QIODevice::ReadOnly)) {
        text_->clear();
        return;
    }
    if (file.size() > mostLogBytes) file.seek(file.size() - mostLogBytes);
    text_->setPlainText(QString::fromUtf8(file.read(mostLogBytes)));
    text_->verticalScrollBar()->setValue(text_->verticalScrollBar()->maximum());
}

bool LogDock::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick && select_) {
        const auto at = static_cast<QMouseEvent*>(event)->pos();
        select_(text_->cursorForPosition(at).block().text().toStdString());
        return true;
    }
    return QDockWidget::eventFilter(watched, event);
}

HistoryDock::HistoryDock(QWidget* parent) : QDockWidget(QStringLiteral("History"), parent) {
    setObjectName(QStringLiteral("History"));
    list_ = new QListWidget(this);
    list_->setAccessibleName(QStringLiteral("Changes of the diagram"));
    setWidget(list_);
    connect(list_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { goTo_(static_cast<std::size_t>(list_->row(item))); });
}

void HistoryDock::Show(const History* history) {
    if (isHidden() || !history || history->Empty()) {
        if (!history) list_->clear();
        return;
    }
    const int steps = static_cast<int>(history->Steps());
    while (list_->count() > steps + 1) delete list_->takeItem(list_->count() - 1);
    for (int i = 0; i <= steps; ++i) {
        const QString name = i == 0 ? QStringLiteral("Opened")
                                    : ToQString(history->Name(static_cast<std::size_t>(i)));
        if (i >= list_->count()) {
            list_->addItem(name);
        } else if (list_->item(i)->text() != name) {
            list_->item(i)->setText(name);
        }
    }
    list_->setCurrentRow(static_cast<int>(history->Place()));
}

void GoToStep(Workbench& workbench, std::size_t step) {
    const DiagramView* view = workbench.Active();
    if (!view || step > view->history.Steps()) return;
    for (std::size_t left = view->history.Steps() + 1; left > 0; --left) {
        const std::size_t place = view->history.Place();
        if (place == step) return;
        place > step ? StepBack(workbench) : StepForward(workbench);
        if (view->history.Place() == place) return;  // refused
    }
}

void SelectByName(Workbench& workbench, const std::string& text) {
    DiagramView* view = workbench.Active();
    if (!view) return;
    Component* found = nullptr;
    for (const auto& component : view->workspace->components) {
        const bool named = text.find(component->name) != std::string::npos;
        if (named && (!found || component->name.size() > found->name.size())) {
            found = component.get();
        }
    }
    if (!found) return;
    view->ClearSelection();
    view->Select(found);
}

}  // namespace photrak
