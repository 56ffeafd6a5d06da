// What the commands share: the catalogue with its user models, and a topology loaded from its
// directory.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "base/status.h"
#include "files/user_models.h"
#include "hierarchy/nested_run.h"
#include "photrak/options.h"
#include "platform/file_system.h"
#include "platform/result_folder.h"

namespace photrak {

struct Session {
    Catalogue catalogue;
    UserModelTable userModels;
    int catalogueWarnings = 0;  // told when the catalogue was opened
    SuperBlockRuns nestedRuns{catalogue};
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<WorkingDirectory> directory;  // the topology's, left at the end
    /// Where the values of the parameters stand, by component and parameter.
    std::map<std::pair<std::string, std::string>, std::string> places;
    std::string resultFolder;  // as the caller names it, with the last separator, or empty
    std::unique_ptr<InputFolder> inputs;  // where results go elsewhere
    std::string inputFolder;              // its path then, or empty
    std::unique_ptr<FolderLock> lock;
    std::string fileName;  // the topology's name within it

    ~Session();
    ModelTable Models() const;
};

/// Reads the catalogue beside the executable and binds the user libraries. False after a report.
bool OpenCatalogue(Session& session);
/// Enters the topology's directory, or `out` for results apart from inputs. A path of "-" is
/// standard input, which needs `out`. False after a report.
bool EnterDirectory(Session& session, const std::string& path, const std::string& out = {});
/// What becomes of a topology that says something that would count otherwise; Told: whatever the
/// load says of it, without an inspection.
enum class Faults { Refused, LetPass, Told };
inline Faults FaultsFor(const CommandOptions& options) {
    return options.lenient ? Faults::LetPass : Faults::Refused;
}
/// Both of these, then loads the topology, reports its texts, in the log file too, loads the
/// parameter files of --load-params and declares the symbols of --set. False after a report if it
/// cannot run; `loaded` tells of warnings.
bool OpenTopology(Session& session, const CommandOptions& options, Status& loaded,
                  Faults faults = Faults::Told);
/// How user libraries are called, after the options of the command.
LibraryPolicy PolicyFor(const CommandOptions& options);
/// Takes the folder of the results for this process. False after a report of who has it.
bool LockFolder(Session& session);
/// The component that the command names. Null after a report.
Component* FindNamed(const Session& session, const std::string& name,
                     const CommandOptions& options);
/// Loads the files of --load-params, up to the first that fails; their texts go to `report` and the
/// log.
Status ApplyParamFiles(const Session& session, const CommandOptions& options, std::string& report);
/// Declares the symbols of --set as variables of the workspace, over those of the file.
void ApplySymbols(Workspace& workspace, const CommandOptions& options);
/// Lists the result files that were written, by paths from the caller's folder, and tells of those
/// that could not be, as when the disk is full. Gives Error then, Warning if only the log was lost.
Status ListResultFiles(const Session& session);

}  // namespace photrak
