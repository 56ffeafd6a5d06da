// The models that the palette offers, in its order: the built-in ones and those of user.lis.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/workspace.h"

namespace photrak {

/// A row of the palette. An index of a model is its place in the table; 0 is the unknown model.
struct ModelRow {
    std::string name;     // model type, the key into the catalogue
    std::string tip;      // name for people; "Blank" marks a gap
    std::string bitmap;   // file of the picture on the canvas
    std::string tooltip;  // of the button
};

inline constexpr std::int32_t lastBuiltInModel = 44;
inline constexpr std::int32_t modelCapacity = 62;
inline constexpr std::string_view blankTip = "Blank";

/// The rows of one process; user models are appended once at its start.
class PaletteModels {
  public:
    PaletteModels();

    /// Appends a line of user.lis: its type, its third word, a file name, and its place in the
    /// list. False when the table is full. An empty type (a comment) keeps its place and gets no
    /// button.
    bool AddUserModel(std::string_view type, std::string_view bitmap);

    const ModelRow& Row(std::int32_t index) const { return rows_[static_cast<std::size_t>(index)]; }
    std::int32_t Last() const { return static_cast<std::int32_t>(rows_.size()) - 1; }
    /// The index whose picture a component of the type has; 0 for a type that no row names.
    std::int32_t IndexOf(std::string_view type) const;
    /// Whether the index has a button: no gap, no comment.
    bool HasButton(std::int32_t index) const;

    /// Port counts asked for with the next blocks of a model; 0 stands for the model's defaults.
    std::int32_t activeInputs[modelCapacity] = {}, activeOutputs[modelCapacity] = {};

  private:
    std::vector<ModelRow> rows_;
};

}  // namespace photrak
