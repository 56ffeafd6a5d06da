// Topologies read for a look at them: the catalogue and the canvas, without a window. No user
// library is loaded and nothing is started.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "workbench/canvas_drawing.h"

namespace photrak {

class DiagramReader {
  public:
    DiagramReader();
    ~DiagramReader();
    /// Reads the catalogue beside the executable. False after a report.
    bool Open();
    Workbench& Bench();
    /// Loads a topology of the working directory into `view`; `text` gets the reader's texts. False
    /// if it does not load.
    bool Load(const std::string& fileName, DiagramView& view, std::string& text);

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace photrak
