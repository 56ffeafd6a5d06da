// Printing of a diagram: to the width of the page, further pages for what it does not hold in
// height.
#pragma once

class QWidget;

namespace photrak {

struct DiagramView;
struct Workbench;

/// Shows the preview, from which the diagram prints. Nothing for an empty diagram.
void PrintDiagram(Workbench& workbench, DiagramView& view, QWidget& parent);
void SetUpPrinter(QWidget& parent);

}  // namespace photrak
