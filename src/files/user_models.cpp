// A user model lives in a library of its own, possibly in another language: what the library throws
// ends at the call, and what the program throws never reaches it.
#include "files/user_models.h"

#include <exception>

#include "base/line_reader.h"
#include "base/text.h"
#include "kernel/support_table.h"
#include "platform/file_system.h"
#include "platform/host.h"
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

/// The library, or null with the reason in `messages`.
void* LoadChecked(const UserLine& line, const std::string& directory, std::string& messages) {
    const std::string path = Concat(directory, line.library);
    const auto refuse = [&](std::string_view reason) {
        messages +=
            Concat("WARNING: user model '", line.type, "': library '", path, "' ", reason, "\n");
        return nullptr;
    };
    if (line.library.empty()) return refuse("is not named");
    Libraries& libraries = *CurrentHost().libraries;
    std::string reason;
    void* library = libraries.Load(path, reason);
    if (!library) return refuse(Concat("does not load: ", reason));
    const auto* version =
        static_cast<const std::int32_t*>(libraries.Find(library, "photrak_support_version"));
    if (!version || *version == PHOTRAK_SUPPORT_VERSION) return library;
    return refuse(Concat("was built for version ", *version, " of the support table, this is ",
                         PHOTRAK_SUPPORT_VERSION));
}

template <class Entry>
Entry FindEntry(void* library, const UserLine& line, std::string_view symbol,
                std::string& messages) {
    if (symbol.empty()) return nullptr;
    void* found = CurrentHost().libraries->Find(library, std::string(symbol));
    if (!found) {
        messages += Concat("WARNING: user model '", line.type, "': no '", symbol, "' in '",
                           line.library, "'\n");
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
        const bool comment = line.type == "*";
        void* library = comment ? nullptr : LoadChecked(line, catalogue.modelDirectory, messages);
        if (library) {
            entry.run = FindEntry<PhotrakRunEntry>(library, line, line.run, messages);
            entry.test = FindEntry<PhotrakTestEntry>(library, line, line.test, messages);
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
    return entry && entry->test;
}

Status UserModelTable::Run(const ModelCall& call) const {
    const UserModelEntry* entry = Find(call.component.type);
    if (!entry || !entry->run) {
        call.errorText += "ERROR: no pointer for user model.";
        return Status::Error;
    }
    const StopScope unstopped(nullptr);  // C frames pass no exception on
    return CallLibrary(call.errorText, [&](char** message) {
        return entry->run(&SupportTable(), call.component.parameters, call.inputs, call.outputs,
                          message);
    });
}

Status UserModelTable::Test(std::string_view type, Parameter* parameters,
                            std::string& message) const {
    const UserModelEntry* entry = Find(type);
    if (!entry || !entry->test) {
        message += noModelTestText;
        return Status::Error;
    }
    return CallLibrary(message,
                       [&](char** text) { return entry->test(&SupportTable(), parameters, text); });
}

}  // namespace photrak
