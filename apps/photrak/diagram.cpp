#include "photrak/diagram.h"

#include "files/catalogue.h"
#include "files/topology_load.h"
#include "photrak/console.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

/// A drawing asks for nothing and shows nothing.
struct NoDesktop : Desktop {
    void Box(BoxKind, std::string_view, std::string_view) override {}
    Answer Query(std::string_view, std::string_view) override { return Answer::Cancel; }
    std::optional<std::string> ChooseFile(const FileRequest&) override { return std::nullopt; }
    bool StartViewer(const std::string&, const std::string&) override { return false; }
    bool StartEditor(const std::string&, const std::string&) override { return false; }
    bool Start(const std::vector<std::string>&, const std::string&) override { return false; }
    void ShowHelp(std::int32_t) override {}
};

}  // namespace

struct DiagramReader::Parts {
    NoDesktop desktop;
    Workbench workbench{desktop, {}, ExecutableDirectory(), "."};
};

DiagramReader::DiagramReader() : parts_(std::make_unique<Parts>()) {}
DiagramReader::~DiagramReader() = default;

bool DiagramReader::Open() {
    std::string text;
    const Status read =
        InitializeModels(parts_->workbench.installDirectory, parts_->workbench.catalogue, text);
    Report(read == Status::Error ? "error" : "warning", text);
    return read != Status::Error;
}

Workbench& DiagramReader::Bench() {
    return parts_->workbench;
}

bool DiagramReader::Load(const std::string& fileName, DiagramView& view, std::string& text) {
    view.directory.assign(1, '.');
    const Status loaded = TopologyLoad(fileName, view.workspace, parts_->workbench.catalogue);
    if (view.workspace) text = std::move(view.workspace->errorText);
    return loaded != Status::Error && view.workspace;
}

}  // namespace photrak
