// The catalogue of models: list files and definition files of the models directory.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// The message when the catalogue cannot be read whole.
extern const char* const catalogueFailureText;

/// Reads "trans.lis", "channel.lis", "control.lis", "receiver.lis", "user.lis" from
/// installDirectory + "models/". Details of what failed go to `errorText`.
Status InitializeModels(const std::string& installDirectory, Catalogue& catalogue,
                        std::string& errorText);
Status ReadModelList(const std::string& listPath, Catalogue& catalogue,
                     std::vector<const Component*>* category, std::string& errorText);
/// Exact search of the list of all models; null if there is none.
const Component* FindModel(const Catalogue& catalogue, std::string_view type);
void ReleaseModels(Catalogue& catalogue);

/// All that a user needs to set a block: what the model is for, its ports, and each parameter with
/// type, default, limits, units or words, and description.
std::string DescribeModel(const Component& prototype);
/// The models by category, each with its note.
std::string ListModels(const Catalogue& catalogue);

}  // namespace photrak
