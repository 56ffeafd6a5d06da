#include "workbench/preferences.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLineEdit>
#include <QSpinBox>
#include <algorithm>
#include <map>
#include <optional>
#include <string>

namespace photrak {
namespace {

constexpr int mostRecent = 10, mostThreads = 256;
constexpr const char* themeWords[] = {"system", "light", "dark"};

QString Key(const char* name) {
    return QString::fromLatin1(name);
}

/// Sets or takes out a variable; remembers what it was before we first touched it.
void SetVariable(const char* name, const QByteArray& value) {
    static std::map<std::string, std::optional<QByteArray>> former;
    const auto [place, isNew] = former.try_emplace(name);
    if (isNew && qEnvironmentVariableIsSet(name)) place->second = qgetenv(name);
    if (!value.isEmpty()) {
        qputenv(name, value);
    } else if (place->second) {
        qputenv(name, *place->second);
    } else {
        qunsetenv(name);
    }
}

}  // namespace

WindowMemory::WindowMemory()
    : settings_(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("photrak"),
                QStringLiteral("workbench")) {}

WindowPreferences WindowMemory::Preferences() const {
    WindowPreferences read;
    const QString theme = settings_.value(Key("theme")).toString();
    for (const ThemeChoice choice : {ThemeChoice::Light, ThemeChoice::Dark}) {
        if (theme == Key(themeWords[static_cast<int>(choice)])) read.theme = choice;
    }
    read.linePatterns = settings_.value(Key("linePatterns")).toBool();
    read.threads = std::clamp(settings_.value(Key("threads")).toInt(), 0, mostThreads);
    read.editor = settings_.value(Key("editor")).toString();
    read.viewer = settings_.value(Key("viewer")).toString();
    return read;
}

void WindowMemory::Store(const WindowPreferences& preferences) {
    settings_.setValue(Key("theme"), Key(themeWords[static_cast<int>(preferences.theme)]));
    settings_.setValue(Key("linePatterns"), preferences.linePatterns);
    settings_.setValue(Key("threads"), preferences.threads);
    settings_.setValue(Key("editor"), preferences.editor);
    settings_.setValue(Key("viewer"), preferences.viewer);
}

QStringList WindowMemory::Recent() const {
    QStringList files = settings_.value(Key("recent")).toStringList();
    files.removeIf([](const QString& file) { return !QFileInfo(file).isFile(); });
    return files;
}

void WindowMemory::AddRecent(const QString& file) {
    QStringList files = Recent();
    files.removeAll(file);
    files.prepend(file);
    settings_.setValue(Key("recent"), QStringList(files.mid(0, mostRecent)));
}

QByteArray WindowMemory::Docks() const {
    return settings_.value(Key("docks")).toByteArray();
}

void WindowMemory::StoreDocks(const QByteArray& state) {
    settings_.setValue(Key("docks"), state);
}

void ApplyToEnvironment(const WindowPreferences& preferences) {
    SetVariable("PHOTRAK_THREADS",
                preferences.threads > 0 ? QByteArray::number(preferences.threads) : QByteArray());
    SetVariable("EDITOR", preferences.editor.toLocal8Bit());
    SetVariable("PLOTCMD", preferences.viewer.toLocal8Bit());
}

bool EditPreferences(WindowPreferences& preferences, QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("WindowPreferences"));
    dialog.setWindowTitle(QStringLiteral("Window Preferences"));
    auto* form = new QFormLayout(&dialog);
    const auto add = [&](const QString& label, auto* field, const QString& hint) {
        field->setAccessibleName(label);
        field->setToolTip(hint);
        form->addRow(label + QLatin1Char(':'), field);
        return field;
    };
    auto* theme = add(QStringLiteral("Theme"), new QComboBox, QStringLiteral("Colors of windows"));
    theme->addItems(
        {QStringLiteral("As the system has it"), QStringLiteral("Light"), QStringLiteral("Dark")});
    theme->setCurrentIndex(static_cast<int>(preferences.theme));
    auto* patterns = add(QStringLiteral("Line patterns"), new QCheckBox,
                         QStringLiteral("Wires differ by dashes as well as by color"));
    patterns->setChecked(preferences.linePatterns);
    auto* threads = add(QStringLiteral("Threads of a run"), new QSpinBox,
                        QStringLiteral("The results do not depend on it"));
    threads->setRange(0, mostThreads);
    threads->setSpecialValueText(QStringLiteral("One for each processor"));
    threads->setValue(preferences.threads);
    auto* editor = add(QStringLiteral("Editor"), new QLineEdit(preferences.editor),
                       QStringLiteral("A command line; the file is its last argument"));
    auto* viewer = add(QStringLiteral("Viewer"), new QLineEdit(preferences.viewer),
                       QStringLiteral("A command line; @FILE is its last argument"));
    editor->setPlaceholderText(QStringLiteral("as EDITOR says"));
    viewer->setPlaceholderText(QStringLiteral("vistrax"));
    viewer->setMinimumWidth(260);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() != QDialog::Accepted) return false;
    preferences = {static_cast<ThemeChoice>(theme->currentIndex()), patterns->isChecked(),
                   threads->value(), editor->text().trimmed(), viewer->text().trimmed()};
    return true;
}

}  // namespace photrak
