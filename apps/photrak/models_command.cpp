// photrak models: what the catalogue offers, and how a block of one model is set.

#include "base/text.h"
#include "files/catalogue.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {

int ModelsCommand(const CommandOptions& options) {
    Session session;
    if (!OpenCatalogue(session)) return exitStatus::failed;
    if (options.file.empty()) {
        WriteOut(ListModels(session.catalogue));
        return exitStatus::success;
    }
    const Component* model = FindModel(session.catalogue, options.file);
    if (!model) {
        Report("error",
               Concat("the catalogue has no model '", options.file, "'; see photrak models"));
        return exitStatus::failed;
    }
    WriteOut(DescribeModel(*model));
    return exitStatus::success;
}

}  // namespace photrak
