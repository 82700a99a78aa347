#include "tools/filter/describe_result.h"

#include <algorithm>
#include <iterator>

#include "engine/image.h"
#include "host/four_char_code.h"

namespace stairmelt {
namespace {

struct ResultRow {
    int16_t result;
    const char* words;
};

constexpr ResultRow kResultRows[] = {
    {kReadErr, "it couldn't read the script's values"},
    {kParamErr, "a call to the host had bad parameters"},
    {kMemFullErr, "there isn't enough memory"},
    {kNilHandleErr, "a memory handle is empty"},
    {kUserCanceledErr, "cancelled"},
    {kErrMissingParameter, "a script value is missing"},
    {kFilterBadParameters, "it doesn't accept this host or its parameters"},
    {kFilterBadMode, "it doesn't filter pictures of this mode or depth"},
    {kErrPlugInHostInsufficient, "it needs a service that the host lacks"},
    {kErrPlugInPropertyUndefined, "it asked for a property that the host lacks"},
    {kErrReportString, "it reports an error of its own"},
    // The low halves of the kernels' codes, which arrive untranslated.
    {static_cast<int16_t>(kKernelMemoryError), "there isn't enough memory for its edge map"},
    {static_cast<int16_t>(kKernelParameterError), "no kernel supports these images"},
};

}  // namespace

std::string DescribeResult(int16_t result) {
    const std::string number = " (result " + std::to_string(result) + ")";
    const auto row = std::ranges::find(kResultRows, result, &ResultRow::result);
    if (row != std::end(kResultRows)) return row->words + number;
    return (result > 0 ? "it stopped without giving a reason" : "it failed") + number;
}

}  // namespace stairmelt
