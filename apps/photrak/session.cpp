#include "photrak/session.h"

#include <filesystem>

#include "base/text.h"
#include "files/catalogue.h"
#include "kernel/graph.h"
#include "models/dispatch.h"
#include "photrak/console.h"

namespace photrak {

Session::~Session() {
    DestroyWorkspace(workspace);
    ReleaseModels(catalogue);
}

ModelTable Session::Models() const {
    return {BuiltInModels(), &userModels};
}

bool OpenCatalogue(Session& session) {
    std::string text;
    if (InitializeModels(ExecutableDirectory(), session.catalogue, text) == Status::Error) {
        Report("error", Concat(catalogueFailureText, "\n", text));
        return false;
    }
    Report("warning", text);
    std::string libraries;
    session.userModels.LoadUserModels(session.catalogue, libraries);
    Report("warning", libraries);
    return true;
}

bool EnterDirectory(Session& session, const std::string& path) {
    const std::filesystem::path file(path);
    session.fileName = file.filename().string();
    const std::string directory = file.has_parent_path() ? file.parent_path().string() : ".";
    session.directory = std::make_unique<WorkingDirectory>(directory);
    if (session.directory->Failed()) {
        Report("error", Concat(path, ": cannot enter the directory '", directory, "'"));
        return false;
    }
    return true;
}

void ApplySymbols(Workspace& workspace, const CommandOptions& options) {
    for (const auto& [name, value] : options.symbols) {
        if (Variable* variable = FindVariable(name, workspace)) {
            variable->value = value;
        } else {
            AddVariable(workspace, name, DoubleType, value);
        }
    }
}

}  // namespace photrak
