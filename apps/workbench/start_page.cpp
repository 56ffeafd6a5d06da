// Examples are drawn by the same code as the canvas, each from its file, by workers.
#include "workbench/start_page.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

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

constexpr QSize pictureSize(220, 130);

QString ExamplesFolder(const Workbench& workbench) {
    return ToQString(workbench.installDirectory + "examples");
}

}  // namespace

StartPage::StartPage(Workbench& workbench, Calls calls)
    : workbench_(workbench), calls_(std::move(calls)) {
    setObjectName(QStringLiteral("Start"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(12);
    auto* title = new QLabel(QStringLiteral("Photrak"), this);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 2);
    large.setBold(true);
    title->setFont(large);
    layout->addWidget(title);
    auto* subtitle =
        new QLabel(QStringLiteral("Design and simulation of fiber-optical links"), this);
    layout->addWidget(subtitle);
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
    layout->addLayout(row);
    auto* examples = new QLabel(QStringLiteral("Examples"), this);
    QFont bold = examples->font();
    bold.setBold(true);
    examples->setFont(bold);
    layout->addWidget(examples);
    auto* list = new QListWidget(this);
    list->setAccessibleName(QStringLiteral("Examples"));
    list->setViewMode(QListView::IconMode);
    list->setIconSize(pictureSize);
    list->setResizeMode(QListView::Adjust);
    list->setMovement(QListView::Static);
    list->setWordWrap(true);
    list->setSpacing(8);
    AddExamples(*list);
    connect(list, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        calls_.openExample(item->data(Qt::UserRole).toString());
    });
    connect(list, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        calls_.openExample(item->data(Qt::UserRole).toString());
    });
    layout->addWidget(list, 1);
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

void StartPage::AddExamples(QListWidget& list) {
    const QDir folder(ExamplesFolder(workbench_));
    for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.top")}, QDir::Files)) {
        auto* item = new QListWidgetItem(file.completeBaseName(), &list);
        item->setData(Qt::UserRole, file.absoluteFilePath());
        item->setSizeHint({pictureSize.width() + 16, pictureSize.height() + 34});
        std::string text;
        const std::optional<Drawing> drawing = DrawTopologyFile(
            workbench_, file.absoluteFilePath().toStdString(), {.measure = &WindowMeasure()}, text);
        if (!drawing) continue;
        item->setIcon(Thumbnail(*drawing, pictureSize, qApp->devicePixelRatio()));
    }
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
