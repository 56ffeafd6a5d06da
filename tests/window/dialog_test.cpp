// Every dialog that the workbench makes: it shows its record, what is typed and chosen reaches the
// record, and nothing in it is cut off.
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QTableWidget>

#include "kernel/symbols.h"
#include "window/frame_fixture.h"
#include "workbench/find_form.h"
#include "workbench/plot_choice_form.h"
#include "workbench/property_form.h"
#include "workbench/recovery_form.h"
#include "workbench/run_forms.h"
#include "workbench/small_forms.h"
#include "workbench/symbols_form.h"

namespace photrak {
namespace {

/// A line or a choice of a dialog, by the name that it tells a screen reader.
struct Editor {
    QLineEdit* line = nullptr;
    QComboBox* choice = nullptr;

    QWidget* Widget() const { return line ? static_cast<QWidget*>(line) : choice; }
    std::string Text() const { return (line ? line->text() : choice->currentText()).toStdString(); }
};

class DialogTest : public FrameTest {
  protected:
    FormDialog& Shown() {
        frame_->Sync();
        auto* dialog = Dialog(workbench_.forms.back()->kind.c_str());
        if (!dialog) throw std::runtime_error("no dialog");
        QApplication::setActiveWindow(dialog);
        return *dialog;
    }
    static Editor EditorOf(const FormDialog& dialog, const std::string& name) {
        const Editor found{dialog.findChild<QLineEdit*>(ToQString(name)),
                           dialog.findChild<QComboBox*>(ToQString(name))};
        if (!found.Widget()) throw std::runtime_error("no editor " + name);
        EXPECT_EQ(found.Widget()->accessibleName().toStdString(), name);
        return found;
    }
    static std::string NameOf(const FormField& field) {
        return field.column.empty() ? field.label : field.column + ": " + field.label;
    }

    static void ExpectShows(const FormDialog& dialog, const Form& form) {
        EXPECT_EQ(dialog.windowTitle().toStdString(), form.title);
        for (const FormField& field : form.fields) {
            const Editor editor = EditorOf(dialog, NameOf(field));
            EXPECT_EQ(editor.Text(), field.text) << field.label;
            EXPECT_EQ(editor.Widget()->isEnabled(), field.enabled) << field.label;
            ExpectTold(*editor.Widget(), field.fault, field.hint);
            EXPECT_TRUE(!editor.choice ||
                        static_cast<std::size_t>(editor.choice->count()) == field.choices.size());
        }
        for (const FormTable& table : form.tables) ExpectShows(dialog, table);
        for (const FormList& list : form.lists) {
            const auto* shown = dialog.findChild<QListWidget*>();
            ASSERT_EQ(static_cast<std::size_t>(shown->count()), list.rows.size());
            EXPECT_EQ(shown->currentRow(), list.selected - 1);
            for (int i = 0; i < shown->count(); ++i) {
                EXPECT_EQ(shown->item(i)->text().toStdString(),
                          list.rows[static_cast<std::size_t>(i)]);
            }
        }
        for (const FormButton& button : form.buttons) {
            const auto* shown = dialog.findChild<QPushButton*>(ToQString(button.label));
            ASSERT_NE(shown, nullptr) << button.label;
            EXPECT_EQ(shown->isEnabled(), button.enabled) << button.label;
        }
    }
    static void ExpectShows(const FormDialog& dialog, const FormTable& record) {
        const auto* table = dialog.findChild<QTableWidget*>();
        ASSERT_EQ(static_cast<std::size_t>(table->rowCount()), record.rows.size());
        for (int i = 0; i < table->rowCount(); ++i) {
            const FormRow& row = record.rows[static_cast<std::size_t>(i)];
            const std::pair<int, const std::string*> fixed[] = {
                {0, &row.name}, {2, &row.least}, {3, &row.greatest}, {6, &row.units}};
            for (const auto& [column, text] : fixed) {
                EXPECT_EQ(table->item(i, column)->text().toStdString(), *text) << row.name;
            }
            const Editor value = EditorOf(dialog, row.name + ", Value");
            EXPECT_EQ(value.Text(), row.value);
            EXPECT_EQ(value.choice != nullptr, row.isChoice);
            ExpectTold(*value.Widget(), row.fault, row.hint);
            if (!row.hasDeviation) continue;
            EXPECT_EQ(EditorOf(dialog, row.name + ", Std. Dev.").Text(), row.deviation);
            EXPECT_EQ(EditorOf(dialog, row.name + ", Distribution").Text(), row.distribution);
        }
    }
    /// A fault has a frame and a text; both texts are there for those who do not see.
    static void ExpectTold(const QWidget& editor, const std::string& fault,
                           const std::string& hint) {
        EXPECT_EQ(editor.styleSheet().isEmpty(), fault.empty());
        EXPECT_TRUE(editor.accessibleDescription().contains(ToQString(fault)));
        EXPECT_TRUE(editor.accessibleDescription().contains(ToQString(hint)));
    }

    /// Types over a line; goes through all of a choice by keys. `text` is the record's cell.
    static void Use(const Editor& editor, const std::function<const std::string&()>& text) {
        editor.Widget()->setFocus();
        if (editor.line) {
            editor.line->selectAll();
            QTest::keyClicks(editor.line, QStringLiteral("7.5"));
            EXPECT_EQ(text(), "7.5") << editor.line->accessibleName().toStdString();
            return;
        }
        QTest::keyClick(editor.choice, Qt::Key_Home);
        EXPECT_EQ(text(), editor.choice->itemText(0).toStdString());
        for (int i = 1; i < editor.choice->count(); ++i) {
            QTest::keyClick(editor.choice, Qt::Key_Down);
            EXPECT_EQ(text(), editor.choice->itemText(i).toStdString());
        }
    }
    static void UseAll(FormDialog& dialog, Form& form) {
        for (std::size_t i = 0; i < form.fields.size(); ++i) {
            if (!form.fields[i].enabled) continue;
            Use(EditorOf(dialog, NameOf(form.fields[i])),
                [&]() -> const std::string& { return form.fields[i].text; });
        }
        if (form.tables.empty()) return;
        std::vector<FormRow>& rows = form.tables.front().rows;
        for (FormRow& row : rows) {
            const std::pair<const char*, std::string*> cells[] = {
                {", Value", &row.value},
                {", Std. Dev.", &row.deviation},
                {", Distribution", &row.distribution}};
            for (const auto& [column, cell] : cells) {
                if (cell != &row.value && !row.hasDeviation) continue;
                Use(EditorOf(dialog, row.name + column),
                    [c = cell]() -> const std::string& { return *c; });
            }
        }
    }
    static void SelectAll(const FormDialog& dialog, const Form& form) {
        for (const FormList& list : form.lists) {
            auto* shown = dialog.findChild<QListWidget*>();
            for (int i = shown->count() - 1; i >= 0; --i) {
                QTest::mouseClick(shown->viewport(), Qt::LeftButton, {},
                                  shown->visualItemRect(shown->item(i)).center());
                EXPECT_EQ(list.selected, i + 1);
            }
        }
    }

    /// Labels, buttons, titles of columns and fixed cells have the room that their texts need, and
    /// the dialog fits a small screen.
    static void ExpectNothingCut(const FormDialog& dialog) {
        const auto widgets = dialog.findChildren<QWidget*>();
        for (const QWidget* widget : widgets) {
            const auto* label = qobject_cast<const QLabel*>(widget);
            const bool fixed = (label && !label->wordWrap()) ||
                               qobject_cast<const QPushButton*>(widget) != nullptr;
            if (!fixed || !widget->isVisible()) continue;
            EXPECT_GE(widget->width(), widget->sizeHint().width())
                << widget->property("text").toString().toStdString();
            EXPECT_GE(widget->height(), widget->sizeHint().height());
        }
        const auto combos = dialog.findChildren<QComboBox*>();
        for (const QComboBox* combo : combos) {
            if (!combo->isVisible()) continue;
            constexpr int arrow = 24;  // and the frame, pixels
            for (int i = 0; i < combo->count(); ++i) {
                EXPECT_GE(combo->width(),
                          combo->fontMetrics().horizontalAdvance(combo->itemText(i)) + arrow)
                    << combo->itemText(i).toStdString();
            }
        }
        if (const auto* table = dialog.findChild<QTableWidget*>()) ExpectNothingCut(*table);
        EXPECT_LE(dialog.width(), 1000);
        EXPECT_LE(dialog.height(), 700);
    }
    static void ExpectNothingCut(const QTableWidget& table) {
        constexpr int air = 8;  // pixels
        for (int column = 0; column < table.columnCount(); ++column) {
            EXPECT_GE(table.columnWidth(column), table.horizontalHeader()->sectionSizeHint(column));
            for (int row = 0; row < table.rowCount(); ++row) {
                const QTableWidgetItem* item = table.item(row, column);
                if (!item) continue;
                const int width = table.fontMetrics().horizontalAdvance(item->text());
                EXPECT_GE(table.columnWidth(column), width + air) << item->text().toStdString();
            }
        }
    }

    /// The Tab key goes through all cells of a table in their order and brings each into sight.
    static void ExpectTabOrder(const FormDialog& dialog, const Form& form) {
        if (form.tables.empty()) return;
        std::vector<std::string> order;
        for (const FormRow& row : form.tables.front().rows) {
            order.push_back(row.name + ", Value");
            if (!row.hasDeviation) continue;
            order.push_back(row.name + ", Std. Dev.");
            order.push_back(row.name + ", Distribution");
        }
        EditorOf(dialog, order.front()).Widget()->setFocus();
        for (const std::string& name : order) {
            QWidget* focus = dialog.focusWidget();
            ASSERT_NE(focus, nullptr);
            EXPECT_EQ(focus->accessibleName().toStdString(), name);
            EXPECT_TRUE(focus->visibleRegion().boundingRect().height() > 10) << name;
            QTest::keyClick(focus, Qt::Key_Tab);
        }
    }

    /// The dialog in front is gone over and left by Escape.
    void GoOver() {
        Form& form = *workbench_.forms.back();
        FormDialog& dialog = Shown();
        ExpectShows(dialog, form);
        ExpectNothingCut(dialog);
        SelectAll(dialog, form);
        ExpectTabOrder(dialog, form);
        UseAll(dialog, form);
        ExpectShows(dialog, form);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_TRUE(workbench_.forms.empty());
        QTest::qWait(0);
    }
};

TEST_F(DialogTest, EveryDialogShowsItsRecordAndReturnsEdits) {
    DiagramView& view = Open("nrz-link.top");
    Component& block = *view.workspace->components.front();
    block.plots = {"one.pcs", "two.pcs", "three.pcs"};
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"preferences", [&] { OpenPreferencesForm(workbench_); }},
        {"about", [&] { OpenAboutForm(workbench_); }},
        {"simulation", [&] { OpenSimulationForm(workbench_, view); }},
        {"scan", [&] { OpenScanForm(workbench_, view); }},
        {"symbols", [&] { OpenSymbolsForm(workbench_, view); }},
        {"find", [&] { OpenFindForm(workbench_, view); }},
        {"recovery", [&] { OpenRecoveryForm(workbench_); }},
        {"plots", [&] { OpenPlotChoiceForm(workbench_, view, block); }},
    };
    const std::string before = TextOf(*view.workspace);
    const std::string state = qgetenv("XDG_STATE_HOME").toStdString() + "/photrak/recovery";
    std::filesystem::create_directories(state);
    const std::string copy = state + "/99999999-1.copy";  // of a process that is no more
    ASSERT_TRUE(WriteWholeFile(copy, "photrak-recovery 1 " + PathOf("lost.top") + "\n" + before));
    for (const auto& [kind, open] : rows) {
        SCOPED_TRACE(kind);
        open();
        ASSERT_EQ(workbench_.forms.size(), 1u);
        EXPECT_EQ(workbench_.forms.back()->kind, kind);
        GoOver();
    }
    EXPECT_EQ(TextOf(*view.workspace), before) << "Escape keeps nothing";
    std::filesystem::remove(copy);
}

/// Each model is placed from the palette by the mouse, and asked for its parameters by it.
TEST_F(DialogTest, EveryModelHasItsParametersInADialog) {
    Trigger("File New");
    DiagramView& view = *workbench_.Active();
    desktop_.file = SourceDir() + "/examples/two-spans.top";  // for a SuperBlock
    std::size_t placed = 0;
    for (const BarButton& button : Palette(workbench_)) {
        if (button.modelIndex == 0 || !button.isOn) continue;
        SCOPED_TRACE(button.tooltip);
        Push(button.tooltip.c_str());
        const QPoint at(60 + 45 * static_cast<int>(placed % 10),
                        60 + 45 * static_cast<int>(placed / 10));
        Click(at.x(), at.y());
        ASSERT_EQ(view.workspace->components.size(), ++placed);
        Push("Select Mode");
        Click(at.x(), at.y(), Qt::RightButton);
        ASSERT_EQ(workbench_.forms.size(), 1u);
        GoOver();
    }
    EXPECT_GE(placed, 40u);
}

TEST_F(DialogTest, ASymbolIsMadeAndStored) {
    DiagramView& view = Open("nrz-link.top");
    Push("Edit Symbols");
    FormDialog& dialog = Shown();
    PushIn(dialog, "New Symbol");
    for (const auto& [name, text] : {std::pair("Name", "span"), {"Expression", "length/2"}}) {
        QLineEdit* line = EditorOf(dialog, name).line;
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, QString::fromLatin1(text));
    }
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_TRUE(workbench_.forms.empty());
    EXPECT_NE(TextOf(*view.workspace).find("span StringType length/2"), std::string::npos);
    EXPECT_TRUE(view.Differs());
}

}  // namespace
}  // namespace photrak
