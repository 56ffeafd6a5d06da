// Five list files tell which models exist: each line a model type and the file of its definition. A
// list is read to its end whatever it holds, so that one message can tell all faults.
#include "files/catalogue.h"

#include <algorithm>

#include "base/line_reader.h"
#include "base/text.h"
#include "files/model_definition.h"
#include "platform/file_system.h"

namespace photrak {

const char* const catalogueFailureText =
    "ERROR in initializing models. Please check to be sure that ALL\n"
    "the model files are in the MODELS directory below the executable,\n"
    "they are all current, and they are all consistent with one another.";

namespace {

constexpr std::string_view listDelimiters = " \t,;:\n";
constexpr std::size_t maxListBytes = std::size_t{4} << 20;

using Category = std::vector<const Component*> Catalogue::*;
constexpr struct {
    const char* file;
    Category category;  // null: the list of all models only
} lists[] = {
    {"trans.lis", &Catalogue::transmitters},
    {"channel.lis", &Catalogue::channels},
    {"control.lis", &Catalogue::controls},
    {"receiver.lis", &Catalogue::receivers},
    {"user.lis", nullptr},
};

std::size_t PlaceOf(const ComponentList& models, std::string_view type) {
    const auto before = [](const std::unique_ptr<Component>& model, std::string_view name) {
        return model->name < name;
    };
    return static_cast<std::size_t>(std::lower_bound(models.begin(), models.end(), type, before) -
                                    models.begin());
}

Component& InsertPrototype(Catalogue& catalogue, std::string_view type,
                           std::vector<const Component*>* category) {
    auto made = std::make_unique<Component>();
    made->name = made->type = type;
    Component& prototype = *made;
    const auto place = static_cast<std::ptrdiff_t>(PlaceOf(catalogue.models, type));
    catalogue.models.insert(catalogue.models.begin() + place, std::move(made));
    if (category) {
        const auto before = [](const Component* a, const Component* b) {
            return a->name < b->name;
        };
        category->insert(std::lower_bound(category->begin(), category->end(), &prototype, before),
                         &prototype);
    }
    return prototype;
}

/// A definition of the program's own must be whole; one that a user has written is told and left
/// out, so that the other models can be worked with.
Status LeaveOut(Catalogue& catalogue, std::string_view type, std::string_view faults,
                std::string& errorText) {
    catalogue.models.erase(catalogue.models.begin() +
                           static_cast<std::ptrdiff_t>(PlaceOf(catalogue.models, type)));
    constexpr std::string_view mark = "ERROR: ";
    if (faults.starts_with(mark)) faults.remove_prefix(mark.size());
    const std::string_view first = faults.substr(0, faults.find('\n'));
    constexpr std::size_t enough = 65536;  // a list of garbage has any number of lines
    if (errorText.size() > enough) return Status::Warning;
    errorText += Concat("WARNING: user model '", type, "' is left out: ", first, "\n");
    return Status::Warning;
}

}  // namespace

Status ReadModelList(const std::string& listPath, Catalogue& catalogue,
                     std::vector<const Component*>* category, std::string& errorText) {
    std::string text, reason;
    if (!ReadWholeFile(listPath, text, reason, maxListBytes)) {
        errorText += Concat("ERROR: cannot read the model list '", listPath, "': ", reason, "\n");
        return Status::Error;
    }
    Status result = Status::Success;
    LineReader reader(text, listPath);
    while (reader.Next()) {
        const std::string_view type = reader.Word(listDelimiters);
        if (type.empty() || type == "*") continue;
        const std::string_view file = reader.Word(listDelimiters);
        if (FindModel(catalogue, type)) continue;  // the first definition wins
        Component& prototype = InsertPrototype(catalogue, type, category);
        std::string faults;
        Status read =
            ReadModelDefinition(prototype, Concat(catalogue.modelDirectory, file), faults);
        if (read == Status::Error && !category) {
            read = LeaveOut(catalogue, type, faults, errorText);
        } else {
            errorText += faults;
        }
        MergeStatus(result, read);
    }
    return result;
}

Status InitializeModels(const std::string& installDirectory, Catalogue& catalogue,
                        std::string& errorText) {
    ReleaseModels(catalogue);
    catalogue.modelDirectory = installDirectory + "models/";
    catalogue.superBlockDirectory = installDirectory + "superblocks/";
    Status result = Status::Success;
    for (const auto& list : lists) {
        auto* category = list.category ? &(catalogue.*list.category) : nullptr;
        MergeStatus(result, ReadModelList(catalogue.modelDirectory + list.file, catalogue, category,
                                          errorText));
    }
    return result;
}

const Component* FindModel(const Catalogue& catalogue, std::string_view type) {
    const std::size_t place = PlaceOf(catalogue.models, type);
    const bool found = place < catalogue.models.size() && catalogue.models[place]->name == type;
    return found ? catalogue.models[place].get() : nullptr;
}

void ReleaseModels(Catalogue& catalogue) {
    for (const auto& list : lists) {
        if (list.category) (catalogue.*list.category).clear();
    }
    catalogue.models.clear();
}

}  // namespace photrak
