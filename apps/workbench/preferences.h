// What the window remembers from one start to the next, beside the profile that the workbench
// keeps: files opened last, where the docks are, and how the user wants it to look and work.
#pragma once

#include <QByteArray>
#include <QSettings>
#include <QStringList>

#include "qt/theme.h"

class QWidget;

namespace photrak {

struct WindowPreferences {
    ThemeChoice theme = ThemeChoice::System;
    bool linePatterns = false;  // wires differ by their dashes too
    int threads = 0;            // of a run; 0: one for each processor
    QString editor, viewer;     // command lines; empty: as the environment has it

    bool operator==(const WindowPreferences&) const = default;
};

class WindowMemory {
  public:
    WindowMemory();

    WindowPreferences Preferences() const;
    void Store(const WindowPreferences& preferences);
    /// The latest first. Files that are gone stay away.
    QStringList Recent() const;
    void AddRecent(const QString& file);
    QByteArray Docks() const;
    void StoreDocks(const QByteArray& state);

  private:
    QSettings settings_;
};

/// Gives runs their threads, editor and viewer by the environment that they read; what the caller
/// had set comes back where a preference is taken out. Not during a run, which reads it.
void ApplyToEnvironment(const WindowPreferences& preferences);

/// Shows the page and changes `preferences`. False if the user canceled.
bool EditPreferences(WindowPreferences& preferences, QWidget* parent);

}  // namespace photrak
