// The script asks the program for models and reads names from the topology on the line with awk; it
// never runs a link.
#include "photrak/completion.h"

#include "base/text.h"
#include "photrak/options.h"

namespace photrak {
namespace {

constexpr std::string_view head = R"(# bash completion for photrak: source <(photrak completion)
_photrak_names() {  # components, or symbols with an equals sign, of the topology on the line
    local word
    for word in "${COMP_WORDS[@]}"; do
        [[ $word == *.top && -f $word ]] || continue
        if [[ $1 == symbols ]]; then
            awk '/^[ \t]*BEGINVARIABLES/ {v = 1; next} /^[ \t]*ENDVARIABLES/ {v = 0}
                 v && NF > 2 {print $1 "="}' "$word"
        else
            awk '$1 == "COMPONENT" {print $2}' "$word"
        fi
    done
}
_photrak() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words=
    if [[ $COMP_CWORD == 1 ]]; then
)";

constexpr std::string_view tail = R"(    esac
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current"; compgen -f -- "$current")
}
complete -F _photrak photrak
)";

/// What stands after an option that takes one of a few words.
constexpr struct {
    std::string_view option, words;
} wordsAfter[] = {
    {"--shard", "auto 1/2 2/2"},
    {"--out|--merge", "$(compgen -d -- \"$current\")"},
    {"--table", "$(compgen -f -- \"$current\")"},
    {"--plotting", "none save display icon"},
    {"--progress", "lines json"},
    {"--eye", "traces density"},
    {"--set|--inner|--outer", "$(_photrak_names symbols)"},
    {"models", R"($(photrak models | awk '/^  / {print $1}'))"},
    {"example", R"($(photrak example | awk '{print $1}'))"},
    {"explain", R"($(photrak explain | awk '{print $1}'))"},
    {"test|params|measure", "$(_photrak_names components)"},
};

}  // namespace

std::string BashCompletion(std::span<const CompletedCommand> commands) {
    std::string names;
    for (const CompletedCommand& command : commands) names += Concat(command.name, " ");
    std::string text(head);
    text += Concat("        words=\"", names, "help\"\n    else\n    case $before in\n");
    for (const auto& row : wordsAfter) {
        text += Concat("        ", row.option, ") words=\"", row.words, "\" ;;\n");
    }
    text += "    esac\n    [[ $current == -* ]] && case ${COMP_WORDS[1]} in\n";
    for (const CompletedCommand& command : commands) {
        text += Concat("        ", command.name, ") words=\"", OptionNames(command.bit), "\" ;;\n");
    }
    return text + std::string(tail);
}

}  // namespace photrak
