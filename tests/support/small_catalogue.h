// A catalogue of small models, made from definition texts in memory: enough kinds of ports and
// parameters for the readers, without the shipped definition files. Needs no test framework.
#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/line_reader.h"
#include "files/model_definition.h"

namespace photrak {

// clang-format off
inline constexpr std::pair<const char*, const char*> smallModels[] = {
    {"Source", "MININPUTS 1\nMAXINPUTS 1\nMINOUTPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
               "INSIGTYPES NoSigType\nOUTSIGTYPES OpSigType\n"
               "PARAM kind EnumType\nVALUE PRBS\nFIELD PRBS custom\nENDPARAM\n"
               "PARAM power DoubleType\nMINVALUE 0\nMAXVALUE 10\nVALUE 1e-3\nSTDDEV 0\n"
               "PROBDIST NoProbDist\nUNITS W\nENDPARAM\n"
               "PARAM root StringType\nVALUE out\nENDPARAM\n"
               "PARAM samples IntType\nMINVALUE 1\nMAXVALUE 99\nVALUE 8\nUNITS none\nENDPARAM\n"},
    {"Pipe", "MININPUTS 1\nMAXINPUTS 1\nMINOUTPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
             "INSIGTYPES OpSigType\nOUTSIGTYPES OpSigType\n"
             "PARAM loss DoubleType\nMINVALUE 0\nMAXVALUE 100\nVALUE 0.2\nSTDDEV 0\n"
             "PROBDIST NoProbDist\nUNITS dB/km\nENDPARAM\n"},
    {"Sink", "MININPUTS 1\nMAXINPUTS 2\nMINOUTPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
             "INSIGTYPES UnknownSigType\nOUTSIGTYPES NoSigType\n"},
    {"Bare", "MININPUTS 0\nMAXINPUTS 4\nMINOUTPUTS 0\nMAXOUTPUTS 4\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
             "NUMINEQNUMOUTNODES TRUE\nINSIGTYPES ElecSigType\nOUTSIGTYPES ElecSigType\n"},
    {"EyeDiagram", "MAXINPUTS 2\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
                   "INSIGTYPES UnknownSigType\nOUTSIGTYPES NoSigType\n"},
    {"InBlock", "MAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
                "INSIGTYPES NoSigType\nOUTSIGTYPES UnknownSigType\n"
                "PARAM portNumber IntType\nMINVALUE 0\nMAXVALUE 99\nVALUE 1\nENDPARAM\n"
                "PARAM signalType StringType\nVALUE UnknownSigType\nENDPARAM\n"},
    {"OutBlock", "MAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
                 "INSIGTYPES UnknownSigType\nOUTSIGTYPES NoSigType\n"
                 "PARAM portNumber IntType\nMINVALUE 0\nMAXVALUE 99\nVALUE 1\nENDPARAM\n"},
    {"Table", "MAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
              "INSIGTYPES OpSigType\nOUTSIGTYPES OpSigType\n"
              "PARAM bits BinaryArrayType\nROWS 1\nCOLS 3\nDATA\n1 0 1\nENDPARAM\n"
              "PARAM weights DoubleArrayType\nROWS 2\nCOLS 2\nXUNITS m\nDATA\n1 2\n3 4\nENDPARAM\n"},
};
// clang-format on

/// Adds a model with the body of its definition; false if that does not read.
inline bool AddModel(Catalogue& catalogue, std::string_view type, std::string_view body) {
    const std::string text = "COMPONENT\n" + std::string(body) + "ENDCOMPONENT\n";
    auto prototype = std::make_unique<Component>();
    prototype->name = prototype->type = type;
    LineReader reader(text, std::string(type) + ".def");
    std::string errorText;
    if (ReadModelDefinition(*prototype, reader, errorText) == Status::Error) return false;
    const auto place = std::find_if(catalogue.models.begin(), catalogue.models.end(),
                                    [&](const auto& model) { return model->name > type; });
    catalogue.models.insert(place, std::move(prototype));
    return true;
}

inline Catalogue SmallCatalogue() {
    Catalogue catalogue;
    for (const auto& [type, body] : smallModels) AddModel(catalogue, type, body);
    return catalogue;
}

}  // namespace photrak
