// photrak models: what the catalogue offers, and how a block of one model is set.

#include "base/nearest.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/catalogue_listing.h"
#include "hierarchy/superblock_listing.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {

int ModelsCommand(const CommandOptions& options) {
    Session session;
    if (!OpenCatalogue(session)) return exitStatus::failed;
    if (options.file.empty()) {
        WriteOut(ListModels(session.catalogue) + ListSuperBlocks(session.catalogue));
        return exitStatus::success;
    }
    constexpr std::string_view nested = "SuperBlock:";
    if (options.file.starts_with(nested)) {
        std::string text;
        const auto description =
            DescribeSuperBlock(options.file.substr(nested.size()), session.catalogue, text);
        Report(description ? "warning" : "error", text);
        if (description) WriteOut(*description);
        return description ? exitStatus::success : exitStatus::failed;
    }
    const Component* model = FindModel(session.catalogue, options.file);
    if (!model) {
        Report("error",
               Concat("the catalogue has no model '", options.file, "'; see photrak models",
                      DidYouMean(NearestOf(options.file, session.catalogue.models,
                                           [](const auto& one) { return one->type; }))));
        return exitStatus::failed;
    }
    WriteOut(options.block ? BlockOf(*model) : DescribeModel(*model));
    return exitStatus::success;
}

}  // namespace photrak
