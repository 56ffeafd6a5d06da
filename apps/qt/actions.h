// Menus, keys and tips of a window from one table of rows; the list of keys in Help is made from
// the same rows.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace photrak {

struct ActionRow {
    std::string_view id;    // "zoom-in"
    std::string_view menu;  // "View"
    std::string_view text;  // "Zoom &In"; empty is a separator
    std::string_view keys;  // "Ctrl++; Ctrl+="; may be empty
    std::string_view tip;   // a sentence for tip, status line and screen reader
    bool checkable = false;
};

class ActionSet {
  public:
    /// Fills the menu bar, menus in the order in which the rows name them. `run` gets the id of
    /// what was chosen.
    void Make(QMainWindow& window, std::span<const ActionRow> rows,
              std::function<void(std::string_view)> run);
    /// Lets the keys of rows that IsForCanvas act while this widget has the focus; lists and fields
    /// keep their letters and arrows. All other keys act in the whole window.
    void AddTo(QWidget& canvas) const;

    /// The action of an id that a row has.
    QAction& At(std::string_view id) const { return *actions_.find(id)->second; }
    /// The menu of a name that a row has.
    QMenu& Menu(std::string_view name) const { return *menus_.find(name)->second; }

  private:
    std::map<std::string, QAction*, std::less<>> actions_;
    std::map<std::string, QMenu*, std::less<>> menus_;
};

/// Keys as QKeySequence understands them, in the order of the row.
QList<QKeySequence> KeysOf(const ActionRow& row);
/// True for a letter, a sign, an arrow and the like without Ctrl or Alt; not for F1 to F35.
bool IsForCanvas(const QKeySequence& key);
/// A table of menu entries, keys and tips as HTML, everything in it escaped.
QString KeyListHtml(std::span<const ActionRow> rows);

}  // namespace photrak
