// The help: guide, models and file formats as pages, with search. Only files of the help folder are
// shown; links that lead out of it are shown as text.
#pragma once

#include <QMainWindow>
#include <map>

class QLineEdit;
class QListWidget;
class QTextBrowser;

namespace photrak {

class HelpWindow : public QMainWindow {
  public:
    /// `folder` holds guide/, models/ and formats/.
    HelpWindow(const QString& folder, QWidget* parent);

    /// Opens the page of a topic at its heading; 0 stands for the contents.
    void ShowTopic(int topic);

  private:
    void ReadPages(const QString& folder);
    void Open(const QString& page, const QString& heading);
    void Find(const QString& words);

    std::map<QString, QString> pages_;  // text by path below the folder, without ".md"
    QListWidget* list_ = nullptr;
    QLineEdit* search_ = nullptr;
    QTextBrowser* browser_ = nullptr;
};

}  // namespace photrak
