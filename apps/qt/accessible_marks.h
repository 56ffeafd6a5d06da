// Marks of a display list as items that a screen reader and a test driver find by role and name.
#pragma once

namespace photrak {

class DisplayWidget;

/// Once for a process; further calls do nothing.
void InstallMarkAccessibility();
/// Tells screen readers that the items changed.
void AnnounceMarks(DisplayWidget& widget);

}  // namespace photrak
