#include "qt/theme.h"

#include <QApplication>
#include <QProxyStyle>

namespace photrak {
namespace {

QColor Mixed(const QColor& from, const QColor& to, double part) {
    const auto mix = [part](int a, int b) { return static_cast<int>(a + (b - a) * part); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}

/// Buttons say what they do in words, in the toolkit's own boxes as in the dialogs of the program.
class PlainButtons : public QProxyStyle {
  public:
    PlainButtons() : QProxyStyle(QStringLiteral("Fusion")) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
};

/// Fields stand on the paper of the drawings, the window around them a step off it.
QPalette PaletteOf(Theme theme) {
    const QColor paper = ColorFor(Role::Paper, theme), ink = ColorFor(Role::Ink, theme);
    const QColor dim = ColorFor(Role::Dim, theme), selected = ColorFor(Role::Selected, theme);
    const bool dark = theme == Theme::Dark;
    const QColor window = Mixed(paper, ink, dark ? 0.07 : 0.045);
    QPalette palette(Mixed(paper, ink, dark ? 0.13 : 0.06), window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, ink);
    palette.setColor(QPalette::Base, paper);
    palette.setColor(QPalette::AlternateBase, Mixed(paper, ink, 0.03));
    palette.setColor(QPalette::ToolTipBase, Mixed(paper, ink, dark ? 0.16 : 0.0));
    palette.setColor(QPalette::PlaceholderText, dim);
    palette.setColor(QPalette::Link, selected);
    palette.setColor(QPalette::Highlight, selected);
    palette.setColor(QPalette::HighlightedText, dark ? paper : QColor(Qt::white));
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, Mixed(window, ink, 0.45));
    return palette;
}

/// The palette that the system gave, kept from before the first change.
const QPalette& OriginalPalette() {
    static const QPalette original = QApplication::palette();
    return original;
}

}  // namespace

QColor ColorFor(Role role, Theme theme) {
    const Color color = ColorOf(role, theme);
    return {color.red, color.green, color.blue};
}

Theme SystemTheme() {
    const QPalette& palette = OriginalPalette();
    const bool dark = palette.color(QPalette::WindowText).lightness() >
                      palette.color(QPalette::Window).lightness();
    return dark ? Theme::Dark : Theme::Light;
}

Theme ApplyTheme(QApplication& application, ThemeChoice choice) {
    const Theme theme = choice == ThemeChoice::System  ? SystemTheme()
                        : choice == ThemeChoice::Light ? Theme::Light
                                                       : Theme::Dark;
    // The platform's own styles ignore parts of a palette.
    application.setStyle(new PlainButtons);
    application.setPalette(PaletteOf(theme));
    return theme;
}

}  // namespace photrak
