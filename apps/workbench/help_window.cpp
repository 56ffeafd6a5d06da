// Headings become places by their text, since a page of Markdown has no anchors.
#include "workbench/help_window.h"

#include <QDir>
#include <QDirIterator>
#include <QLineEdit>
#include <QListWidget>
#include <QSplitter>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>

#include "qt/text_measure_qt.h"
#include "workbench/help_topics.h"

namespace photrak {
namespace {

QString TitleOf(const QString& text) {
    const QString first = text.section(QLatin1Char('\n'), 0, 0);
    return first.startsWith(QStringLiteral("# ")) ? first.mid(2) : first;
}

/// The guide before the models, these before the formats; the contents first.
int RankOf(const QString& page) {
    if (page == QStringLiteral("guide/index")) return 0;
    return page.startsWith(QStringLiteral("guide/"))    ? 1
           : page.startsWith(QStringLiteral("models/")) ? 2
                                                        : 3;
}

}  // namespace

HelpWindow::HelpWindow(const QString& folder, QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("Photrak Help"));
    setObjectName(QStringLiteral("Help"));
    resize(900, 640);
    auto* splitter = new QSplitter(this);
    auto* left = new QWidget(splitter);
    auto* column = new QVBoxLayout(left);
    search_ = new QLineEdit(left);
    search_->setPlaceholderText(QStringLiteral("Search"));
    search_->setAccessibleName(QStringLiteral("Search the help"));
    search_->setClearButtonEnabled(true);
    list_ = new QListWidget(left);
    list_->setAccessibleName(QStringLiteral("Pages"));
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column->addWidget(search_);
    column->addWidget(list_);
    browser_ = new QTextBrowser(splitter);
    browser_->setAccessibleName(QStringLiteral("Page"));
    browser_->setOpenLinks(false);
    browser_->document()->setDocumentMargin(16);
    splitter->addWidget(left);
    splitter->addWidget(browser_);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    ReadPages(folder);
    Find({});
    // As wide as the longest title, within reason: the width of the window is 900 pixels.
    constexpr int least = 230, most = 360, air = 60;
    const int width = std::clamp(list_->sizeHintForColumn(0) + air, least, most);
    splitter->setSizes({width, 900 - width});
    connect(search_, &QLineEdit::textChanged, this, &HelpWindow::Find);
    connect(list_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        if (item) Open(item->data(Qt::UserRole).toString(), {});
    });
    connect(browser_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
        const QString from = browser_->property("page").toString();
        QString path = QDir::cleanPath(QFileInfo(from).path() + QLatin1Char('/') + link.path());
        if (path.endsWith(QStringLiteral(".md"))) path.chop(3);
        Open(path, {});
    });
}

void HelpWindow::ReadPages(const QString& folder) {
    QDirIterator files(folder, {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly)) continue;
        QString page = QDir(folder).relativeFilePath(file.fileName());
        page.chop(3);
        pages_[page] = QString::fromUtf8(file.readAll());
    }
}

void HelpWindow::Find(const QString& words) {
    list_->clear();
    for (int rank = 0; rank <= 3; ++rank) {
        for (const auto& [page, text] : pages_) {
            if (RankOf(page) != rank || !text.contains(words, Qt::CaseInsensitive)) continue;
            auto* item = new QListWidgetItem(TitleOf(text), list_);
            item->setData(Qt::UserRole, page);
        }
    }
}

void HelpWindow::Open(const QString& page, const QString& heading) {
    const auto found = pages_.find(page);
    if (found == pages_.end()) return;
    browser_->setProperty("page", page);
    browser_->setMarkdown(found->second);
    QTextCursor place(browser_->document());
    for (QTextBlock block = browser_->document()->begin(); block.isValid(); block = block.next()) {
        const bool isHeading = block.blockFormat().headingLevel() > 0;
        if (!heading.isEmpty() && isHeading && block.text() == heading) {
            place = QTextCursor(block);
        }
    }
    browser_->moveCursor(QTextCursor::End);  // so that the heading comes to the top
    browser_->setTextCursor(place);
    browser_->ensureCursorVisible();
    if (!search_->text().isEmpty() && heading.isEmpty()) browser_->find(search_->text());
}

void HelpWindow::ShowTopic(int topic) {
    const HelpPlace place = HelpPlaceOf(topic);
    search_->clear();
    for (int row = 0; row < list_->count(); ++row) {
        if (list_->item(row)->data(Qt::UserRole).toString() == ToQString(place.page)) {
            list_->setCurrentRow(row);
        }
    }
    Open(ToQString(place.page), ToQString(place.heading));
    show();
    raise();
    activateWindow();
}

}  // namespace photrak
