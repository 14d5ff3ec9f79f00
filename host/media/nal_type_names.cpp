#include "host/media/nal_type_names.h"

#include <array>

namespace mvrtpfec {

namespace {

constexpr std::array<std::string_view, 22> h264Names{
    "unspecified",
    "slice",
    "partition A",
    "partition B",
    "partition C",
    "IDR slice",
    "SEI",
    "SPS",
    "PPS",
    "delimiter",
    "end of sequence",
    "end of stream",
    "filler",
    "SPS extension",
    "prefix",
    "subset SPS",
    "depth parameter set",
    "reserved",
    "reserved",
    "auxiliary slice",
    "slice extension",
    "depth slice extension",
};

constexpr std::array<std::string_view, 22> hevcSliceNames{
    "TRAIL_N",  "TRAIL_R",    "TSA_N",    "TSA_R",      "STSA_N",   "STSA_R", "RADL_N", "RADL_R",
    "RASL_N",   "RASL_R",     "RSV_N",    "RSV_R",      "RSV_N",    "RSV_R",  "RSV_N",  "RSV_R",
    "BLA_W_LP", "BLA_W_RADL", "BLA_N_LP", "IDR_W_RADL", "IDR_N_LP", "CRA",
};

constexpr unsigned firstHevcNonVcl = 32;
constexpr std::array<std::string_view, 9> hevcNonVclNames{"VPS", "SPS", "PPS",        "AUD",       "EOS",
                                                          "EOB", "FD",  "prefix SEI", "suffix SEI"};

}  // namespace

std::string_view h264TypeName(unsigned type) {
    constexpr unsigned firstUnspecified = 24;
    if (type >= firstUnspecified) return "unspecified";
    return type < h264Names.size() ? h264Names[type] : "reserved";
}

std::string_view hevcTypeName(unsigned type) {
    constexpr unsigned firstUnspecified = 48;
    if (type >= firstUnspecified) return "unspecified";
    if (type < hevcSliceNames.size()) return hevcSliceNames[type];
    if (type >= firstHevcNonVcl && type - firstHevcNonVcl < hevcNonVclNames.size())
        return hevcNonVclNames[type - firstHevcNonVcl];
    return "reserved";
}

}  // namespace mvrtpfec
