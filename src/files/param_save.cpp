// PARAM blocks as the reader of parameter values takes them.
#include "files/param_save.h"

#include "base/text.h"
#include "files/array_values.h"
#include "files/topology_words.h"

namespace photrak {

void WriteParamBlock(const Parameter& parameter, std::string& out) {
    const ParameterType& type = TypeOf(parameter.type);
    if (type.word.empty() || (IsArray(type) && !parameter.valactual)) return;
    const std::string name = CleanWord(parameter.name ? parameter.name : "");
    out += Concat("PARAM ", name, " ", type.word, "\n");
    if (IsArray(type)) {
        WriteArrayBody(*static_cast<const ArrayRecord*>(parameter.valactual), out);
    } else {
        WriteScalarBody(parameter, out);
    }
    out += "ENDPARAM\n";
}

}  // namespace photrak
