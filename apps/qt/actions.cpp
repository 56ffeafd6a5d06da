#include "qt/actions.h"

#include <QMenu>
#include <QMenuBar>

#include "qt/text_measure_qt.h"

namespace photrak {

QList<QKeySequence> KeysOf(const ActionRow& row) {
    QList<QKeySequence> keys;
    for (const QString& key : ToQString(row.keys).split(QStringLiteral("; "), Qt::SkipEmptyParts))
        keys.append(QKeySequence(key, QKeySequence::PortableText));
    return keys;
}

bool IsForCanvas(const QKeySequence& key) {
    const QKeyCombination first = key[0];
    const bool plain = (first.keyboardModifiers() & ~Qt::ShiftModifier) == Qt::NoModifier;
    return plain && (first.key() < Qt::Key_F1 || first.key() > Qt::Key_F35);
}

void ActionSet::Make(QMainWindow& window, std::span<const ActionRow> rows,
                     std::function<void(std::string_view)> run) {
    for (const ActionRow& row : rows) {
        QMenu*& menu = menus_[std::string(row.menu)];
        if (!menu) menu = window.menuBar()->addMenu(ToQString(row.menu));
        menu->setToolTipsVisible(true);
        if (row.text.empty()) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(ToQString(row.text));
        const QList<QKeySequence> keys = KeysOf(row);
        action->setShortcuts(keys);
        action->setCheckable(row.checkable);
        action->setStatusTip(ToQString(row.tip));
        action->setToolTip(ToQString(row.tip).toHtmlEscaped());
        action->setObjectName(ToQString(row.id));
        if (std::any_of(keys.begin(), keys.end(), IsForCanvas))
            action->setShortcutContext(Qt::WidgetShortcut);
        QObject::connect(action, &QAction::triggered, &window, [run, id = row.id] { run(id); });
        actions_[std::string(row.id)] = action;
    }
}

void ActionSet::AddTo(QWidget& canvas) const {
    for (const auto& [id, action] : actions_) {
        if (action->shortcutContext() == Qt::WidgetShortcut) canvas.addAction(action);
    }
}

QString KeyListHtml(std::span<const ActionRow> rows) {
    QString html = QStringLiteral("<table cellpadding=\"3\">");
    std::string_view menu;
    for (const ActionRow& row : rows) {
        if (row.text.empty()) continue;
        if (row.menu != menu) {
            html += QStringLiteral("<tr><th colspan=\"3\" align=\"left\">%1</th></tr>")
                        .arg(ToQString(row.menu).remove(QLatin1Char('&')).toHtmlEscaped());
        }
        menu = row.menu;
        QStringList keys;
        for (const QKeySequence& key : KeysOf(row))
            keys.append(key.toString(QKeySequence::NativeText).toHtmlEscaped());
        QString entry = ToQString(row.text);
        entry.remove(QLatin1Char('&'));
        html += QStringLiteral("<tr><td>%1</td><td><b>%2</b>&nbsp;&nbsp;</td><td>%3</td></tr>")
                    .arg(entry.toHtmlEscaped(), keys.join(QStringLiteral(", ")),
                         ToQString(row.tip).toHtmlEscaped());
    }
    return html + QStringLiteral("</table>");
}

}  // namespace photrak
