// Examples are drawn by the same code as the canvas, each from its file, one at a time between
// events.
#include "workbench/start_page.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "base/text.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "qt/text_measure_qt.h"
#include "workbench/canvas_drawing.h"
#include "workbench/file_commands.h"
#include "workbench/look.h"
#include "workbench/recovery.h"

namespace photrak {
namespace {

constexpr QSize pictureSize(160, 96);
constexpr int textHeight = 84;  // a name and a sentence of four lines

/// In the order in which one learns them; the others follow by name.
constexpr const char* firstExamples[] = {"first-bits",   "nrz-link",        "eye-10g", "ber-power",
                                         "direct-laser", "superblock-line", "wdm8"};

QString ExamplesFolder(const Workbench& workbench) {
    return ToQString(workbench.installDirectory + "examples");
}

QFileInfoList ExampleFiles(const Workbench& workbench) {
    QFileInfoList files =
        QDir(ExamplesFolder(workbench)).entryInfoList({QStringLiteral("*.top")}, QDir::Files);
    const auto place = [](const QFileInfo& file) {
        return std::ranges::find(firstExamples, file.completeBaseName().toStdString());
    };
    std::ranges::stable_sort(files, {}, place);
    return files;
}

/// Of the note of a topology; a long one is cut at a word.
QString FirstSentence(const QString& path) {
    constexpr qint64 mostBytes = 4096;
    constexpr int mostLetters = 90;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray begin = file.read(mostBytes);
    const QString mark = QStringLiteral("NOTE ");
    for (const QByteArray& line : begin.split('\n')) {
        QString note = QString::fromUtf8(line);
        if (!note.startsWith(mark)) continue;
        note = note.mid(mark.size());
        const qsizetype end = note.indexOf(QStringLiteral(". "));
        if (end >= 0) note.truncate(end + 1);
        if (note.size() <= mostLetters) return note;
        return note.left(note.lastIndexOf(QLatin1Char(' '), mostLetters)) + QStringLiteral(" ...");
    }
    return {};
}

QLabel* Heading(const QString& text, QWidget* parent) {
    auto* heading = new QLabel(text, parent);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    return heading;
}

}  // namespace

StartPage::StartPage(Workbench& workbench, Calls calls)
    : workbench_(workbench), calls_(std::move(calls)) {
    setObjectName(QStringLiteral("Start"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(12);
    AddTitle(*layout);
    AddButtons(*layout);
    AddRecent(*layout);
    AddExamples(*layout);
}

void StartPage::AddTitle(QBoxLayout& layout) {
    auto* title = new QLabel(QStringLiteral("Photrak"), this);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 2);
    large.setBold(true);
    title->setFont(large);
    layout.addWidget(title);
    layout.addWidget(
        new QLabel(QStringLiteral("Design and simulation of fiber-optical links"), this));
}

void StartPage::AddButtons(QBoxLayout& layout) {
    auto* row = new QHBoxLayout;
    for (const char* command : {"File New", "File Open", "File Recover"}) {
        auto* button = new QPushButton(
            QString::fromLatin1(command).mid(5) +
                (std::string_view(command) == "File Open" ? QStringLiteral("...") : QString()),
            this);
        button->setObjectName(QString::fromLatin1(command));
        button->setMinimumHeight(32);
        connect(button, &QPushButton::clicked, this, [this, command] { calls_.run(command); });
        row->addWidget(button);
        recover_ = button;  // the last one
    }
    Offer();
    row->addStretch(1);
    layout.addLayout(row);
}

void StartPage::Offer() {
    const std::vector<RecoveryCopy> copies = RecoveryCopies(workbench_);
    recover_->setEnabled(!copies.empty());
    recover_->setText(copies.empty() ? QStringLiteral("Recover")
                                     : QStringLiteral("Recover %1").arg(copies.size()));
    // Names come from files: they are shown as they are.
    QString tip = QStringLiteral("<qt>Was not saved:");
    for (const RecoveryCopy& copy : copies) {
        tip += QStringLiteral("<br>") + ToQString(copy.fileName).toHtmlEscaped();
    }
    recover_->setToolTip(copies.empty() ? QStringLiteral("Everything is saved") : tip);
}

void StartPage::AddRecent(QBoxLayout& layout) {
    recentPart_ = new QWidget(this);
    auto* inside = new QVBoxLayout(recentPart_);
    inside->setContentsMargins(0, 0, 0, 0);
    inside->addWidget(Heading(QStringLiteral("Recent"), this));
    recent_ = new QListWidget(this);
    recent_->setAccessibleName(QStringLiteral("Recent"));
    recent_->setTextElideMode(Qt::ElideMiddle);
    recent_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const auto open = [this](QListWidgetItem* item) { calls_.open(item->text()); };
    connect(recent_, &QListWidget::itemActivated, this, open);
    connect(recent_, &QListWidget::itemClicked, this, open);
    inside->addWidget(recent_);
    layout.addWidget(recentPart_);
    recentPart_->hide();
}

void StartPage::ShowRecent(const QStringList& files) {
    constexpr int mostRows = 4;
    recent_->clear();
    for (const QString& file : files) {
        (new QListWidgetItem(file, recent_))->setToolTip(file.toHtmlEscaped());
    }
    const int rows = std::clamp(recent_->count(), 1, mostRows);
    const int height = files.isEmpty() ? 0 : rows * recent_->sizeHintForRow(0);
    recent_->setFixedHeight(height + 2 * recent_->frameWidth());
    recentPart_->setVisible(!files.isEmpty());
}

void StartPage::AddExamples(QBoxLayout& layout) {
    layout.addWidget(Heading(QStringLiteral("Examples"), this));
    examples_ = new QListWidget(this);
    examples_->setAccessibleName(QStringLiteral("Examples"));
    examples_->setViewMode(QListView::IconMode);
    examples_->setIconSize(pictureSize);
    examples_->setResizeMode(QListView::Adjust);
    examples_->setMovement(QListView::Static);
    examples_->setWordWrap(true);
    examples_->setSpacing(8);
    QPixmap empty(pictureSize);
    empty.fill(Qt::transparent);
    for (const QFileInfo& file : ExampleFiles(workbench_)) {
        const QString note = FirstSentence(file.absoluteFilePath());
        const QString name = file.completeBaseName();
        auto* item = new QListWidgetItem(
            QIcon(empty), note.isEmpty() ? name : name + QLatin1Char('\n') + note, examples_);
        item->setData(Qt::UserRole, file.absoluteFilePath());
        item->setTextAlignment(Qt::AlignHCenter | Qt::AlignTop);
        item->setSizeHint({pictureSize.width() + 16, pictureSize.height() + textHeight});
    }
    const auto open = [this](QListWidgetItem* item) {
        calls_.openExample(item->data(Qt::UserRole).toString());
    };
    connect(examples_, &QListWidget::itemActivated, this, open);
    connect(examples_, &QListWidget::itemClicked, this, open);
    layout.addWidget(examples_, 1);
    QTimer::singleShot(0, this, [this] { DrawExample(0); });
}

void StartPage::DrawExample(int row) {
    if (row >= examples_->count()) return;
    QListWidgetItem* item = examples_->item(row);
    std::string text;
    const std::optional<Drawing> drawing =
        DrawTopologyFile(workbench_, item->data(Qt::UserRole).toString().toStdString(),
                         {.measure = &WindowMeasure()}, text);
    if (drawing) item->setIcon(Thumbnail(*drawing, pictureSize, qApp->devicePixelRatio()));
    QTimer::singleShot(0, this, [this, row] { DrawExample(row + 1); });
}

void OpenExample(Workbench& workbench, const std::string& file) {
    const QFileInfo source(ToQString(file));
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QDir folder(documents + QStringLiteral("/Photrak/") + source.completeBaseName());
    if (!QDir().mkpath(folder.path())) {
        workbench.ErrorBox(Concat("Cannot make the folder '", folder.path().toStdString(), "'"));
        return;
    }
    for (const QFileInfo& part : source.dir().entryInfoList(QDir::Files)) {
        const QString target = folder.filePath(part.fileName());
        const bool own = part.suffix() != QStringLiteral("top") || part == source;
        if (own && !QFile::exists(target)) QFile::copy(part.filePath(), target);
    }
    OpenDiagram(workbench, folder.filePath(source.fileName()).toStdString(),
                OpenAgain::BringToFront);
}

}  // namespace photrak
