// A list of models from a file: every row that names a definition gives a sorted prototype.
#include <algorithm>

#include "files/catalogue.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const InputFile input(data, size);
    Catalogue catalogue;
    catalogue.modelDirectory = "/nowhere/";
    std::vector<const Component*> category;
    std::string errorText;
    static_cast<void>(ReadModelList(input.Path(), catalogue, &category, errorText));
    Require(std::ranges::is_sorted(catalogue.models, {}, [](const auto& m) { return m->name; }));
    for (const auto& model : catalogue.models)
        Require(FindModel(catalogue, model->name) == model.get());
    ReleaseModels(catalogue);
    return 0;
}
