// A user model lives in a library of its own, possibly in another language: what the library throws
// ends at the call, and what the program throws never reaches it.
#include "files/user_models.h"

#include <exception>

#include "base/harmless_text.h"
#include "base/line_reader.h"
#include "base/text.h"
#include "files/isolated_call.h"
#include "kernel/library_records.h"
#include "kernel/support_table.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "platform/library_file.h"
#include "platform/library_guard.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr std::string_view userDelimiters = " \t";
constexpr std::size_t maxListBytes = std::size_t{4} << 20;

/// The words of a line of user.lis.
struct UserLine {
    std::string_view type, definition, bitmap, library, run, test;
};

UserLine SplitLine(LineReader& reader) {
    UserLine line;
    for (std::string_view* word :
         {&line.type, &line.definition, &line.bitmap, &line.library, &line.run, &line.test}) {
        *word = reader.Word(userDelimiters);
    }
    return line;
}

/// A line that tells what is wrong with the library of a model.
std::string LibraryLine(std::string_view kind, std::string_view type, std::string_view path,
                        std::string_view reason) {
    return Concat(kind, ": user model '", type, "': library '", path, "' ", reason, "\n");
}

/// The library in the process, or null with an error.
void* LoadLibrary(const UserModelEntry& entry, const LibraryPolicy& policy, std::string& text) {
    const auto refuse = [&](std::string_view reason) {
        text += LibraryLine("ERROR", entry.type, entry.library, reason);
        return nullptr;
    };
    if (const std::string fault = LibraryFault(entry.library); !fault.empty()) return refuse(fault);
    const std::string doubt = policy.trustsAll ? std::string() : LibraryDoubt(entry.library);
    if (!doubt.empty()) return refuse(Concat(doubt, "; '--trust' runs it all the same"));
    Libraries& libraries = *CurrentHost().libraries;
    std::string reason;
    void* library = libraries.Load(entry.library, reason);
    if (!library) return refuse(Concat("does not load: ", reason));
    const auto* version =
        static_cast<const std::int32_t*>(libraries.Find(library, "photrak_support_version"));
    if (!version || *version == PHOTRAK_SUPPORT_VERSION) return library;
    return refuse(Concat("was built for version ", *version, " of the support table, this is ",
                         PHOTRAK_SUPPORT_VERSION));
}

/// The entry of that name, or null, with an error unless the library has none by intent.
template <class Entry>
Entry BindEntry(const UserModelEntry* model, std::string UserModelEntry::*symbol,
                const LibraryPolicy& policy, std::string& text) {
    if (!model || model->library.empty() || (model->*symbol).empty()) return nullptr;
    if (!model->loaded) model->loaded = LoadLibrary(*model, policy, text);
    if (!model->loaded) return nullptr;
    void* found = CurrentHost().libraries->Find(model->loaded, model->*symbol);
    if (!found) {
        text += LibraryLine("ERROR", model->type, model->library,
                            Concat("has no entry '", model->*symbol, "'"));
    }
    return reinterpret_cast<Entry>(found);
}

/// A transform that failed inside the call is an error even if the library took no notice.
Status WithSupportFailure(Status status, std::string& text) {
    if (const auto failure = TakeSupportFailure()) {
        text += Concat("ERROR: in the user model: ", *failure, "\n");
        return Status::Error;
    }
    return status;
}

/// Calls an entry with a place for its message and appends the text that it leaves there.
template <class Call>
Status CallLibrary(std::string& text, const Call& call) {
    char empty[] = "";
    char* message = empty;
    TakeSupportFailure();  // what an earlier library may have left behind
    try {
        const std::int16_t status = call(&message);
        if (message) text.append(message);
        const bool known = status >= 0 && status <= 2;
        return WithSupportFailure(known ? static_cast<Status>(status) : Status::Error, text);
    } catch (const std::exception& fault) {
        text += Concat("ERROR: the user model threw: ", fault.what(), "\n");
    } catch (...) {
        text += "ERROR: the user model threw\n";
    }
    return Status::Error;
}

/// The call itself, and a look at what it leaves in the output cells.
Status RunEntry(PhotrakRunEntry run, const UserModelEntry& entry, const ModelCall& call) {
    const StopScope unstopped(nullptr);  // C frames pass no exception on
    BeginLibraryRecords();
    Status status = Status::Error;
    {
        const LibraryGuard guard(HarmlessText(Concat(call.path, call.owner)),
                                 HarmlessText(entry.library));
        status = CallLibrary(call.errorText, [&](char** message) {
            return run(&SupportTable(), call.component.parameters, call.inputs, call.outputs,
                       message);
        });
    }
    return CheckLibraryOutputs(call.inputs, call.outputs, call.errorText) ? status : Status::Error;
}

}  // namespace

void UserModelTable::LoadUserModels(const Catalogue& catalogue, std::string& messages) {
    entries_.clear();
    const std::string path = catalogue.modelDirectory + "user.lis";
    std::string text, reason;
    if (!ReadWholeFile(path, text, reason, maxListBytes)) {
        messages += Concat("WARNING: cannot read '", path, "': ", reason, "\n");
        return;
    }
    LineReader reader(text, path);
    while (reader.Next()) {
        // By design: every line counts here, a comment too, since the place of a line is
        // the place of its model in the palette.
        const UserLine line = SplitLine(reader);
        UserModelEntry entry;
        entry.type = line.type;
        entry.bitmap = Concat(line.bitmap.substr(0, line.bitmap.find('.')), "u.bmp");
        entry.runSymbol = line.run;
        entry.testSymbol = line.test;
        const bool comment = line.type == "*";
        if (!comment && line.library.empty()) {
            messages += LibraryLine("WARNING", line.type, catalogue.modelDirectory, "is not named");
        } else if (!comment) {
            entry.library = Concat(catalogue.modelDirectory, line.library);
            const std::string fault = LibraryFault(entry.library);
            if (!fault.empty()) {
                messages += LibraryLine("WARNING", line.type, entry.library, fault);
                entry.library.clear();
            }
        }
        entries_.push_back(std::move(entry));
    }
}

const UserModelEntry* UserModelTable::Find(std::string_view type) const {
    for (const UserModelEntry& entry : entries_) {
        if (entry.type == type) return &entry;
    }
    return nullptr;
}

bool UserModelTable::Knows(std::string_view type) const {
    return Find(type) != nullptr;
}

bool UserModelTable::HasTest(std::string_view type) const {
    const UserModelEntry* entry = Find(type);
    return entry && !entry->library.empty() && !entry->testSymbol.empty();
}

Status UserModelTable::Run(const ModelCall& call) const {
    const UserModelEntry* entry = Find(call.component.type);
    const auto run =
        BindEntry<PhotrakRunEntry>(entry, &UserModelEntry::runSymbol, policy_, call.errorText);
    if (!run) {
        call.errorText += "ERROR: no pointer for user model.";
        return Status::Error;
    }
    const auto callIt = [&](const ModelCall& to) { return RunEntry(run, *entry, to); };
    return policy_.isolated > 0.0 ? CallIsolated(call, policy_.isolated, callIt) : callIt(call);
}

Status UserModelTable::Test(std::string_view type, Parameter* parameters,
                            std::string& message) const {
    const UserModelEntry* entry = Find(type);
    if (!HasTest(type)) {
        message += noModelTestText;
        return Status::Error;
    }
    const auto test =
        BindEntry<PhotrakTestEntry>(entry, &UserModelEntry::testSymbol, policy_, message);
    if (!test) return Status::Error;
    const LibraryGuard guard(HarmlessText(type), HarmlessText(entry->library));
    return CallLibrary(message,
                       [&](char** text) { return test(&SupportTable(), parameters, text); });
}

}  // namespace photrak
