// Events against the workbench from a text: each is played, or refused with a reason. Nothing may
// leave the scratch folder, so texts with a path in them are passed over.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "workbench/script_player.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostEvents = 60;  // an input of the fuzzer is to end within a second

/// The working directory, the profile's and that of the recovery copies; gone at the end.
class ScratchFolder {
  public:
    ScratchFolder() : path_((fs::temp_directory_path() / "photrak-fuzz-XXXXXX").string()) {
        Require(::mkdtemp(path_.data()));
        for (const char* variable : {"HOME", "XDG_STATE_HOME", "XDG_CONFIG_HOME"})
            ::setenv(variable, path_.c_str(), 1);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

void Play(std::string_view text) {
    static const ScratchFolder folder;
    for (const auto& left : fs::directory_iterator(folder.Path())) fs::remove_all(left);
    fs::current_path(folder.Path());
    ScriptDesktop desktop(folder.Path(), ExecutableDirectory());
    ScriptProcesses processes(desktop);
    Host host = CurrentHost();
    host.processes = &processes;
    const HostScope scope(host);
    Workbench workbench{desktop,
                        {BuiltInModels(), HasBlockTest, TestByStages},
                        ExecutableDirectory(),
                        folder.Path()};
    workbench.run.holds = true;
    Require(StartWorkbench(workbench));
    ScriptPlayer player(workbench, desktop);
    for (std::size_t event = 0, at = 0; at < text.size() && event < mostEvents; ++event) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string reason;
        Require(player.Play(text.substr(at, end - at), reason) || !reason.empty());
        static_cast<void>(player.TakeOutput());
        at = end + 1;
    }
    player.Finish();
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (text.find('/') != text.npos || text.find("\\x") != text.npos) return 0;
    photrak::Play(text);
    return 0;
}
