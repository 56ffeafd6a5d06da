// The catalogue of models: list files and definition files of the models directory.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "files/catalogue_listing.h"
#include "kernel/workspace.h"

namespace photrak {

/// The message when the catalogue cannot be read whole.
extern const char* const catalogueFailureText;

/// Reads "trans.lis", "channel.lis", "control.lis", "receiver.lis", "user.lis" from
/// installDirectory + "models/". Details of what failed go to `errorText`: an error for a list or
/// a definition that cannot be read, a warning for a definition without its end, and for one of
/// user.lis that cannot be read, whose model is left out.
Status InitializeModels(const std::string& installDirectory, Catalogue& catalogue,
                        std::string& errorText);
/// A null category is the list of user models.
Status ReadModelList(const std::string& listPath, Catalogue& catalogue,
                     std::vector<const Component*>* category, std::string& errorText);
/// Exact search of the list of all models; null if there is none.
const Component* FindModel(const Catalogue& catalogue, std::string_view type);
void ReleaseModels(Catalogue& catalogue);

}  // namespace photrak
