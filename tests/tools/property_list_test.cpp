#include "tools/filter/property_list.h"

#include <gtest/gtest.h>

#include "tools/byte_order.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

struct Property {
    std::string vendor, key, data;
};

Bytes MakeList(const std::vector<Property>& properties, bool lengthCountsPadding) {
    Bytes list(6);
    AppendNumber(list, static_cast<uint32_t>(properties.size()), false);
    for (const Property& property : properties) {
        std::string data = property.data;
        data.resize((data.size() + 3) / 4 * 4);
        list.insert(list.end(), property.vendor.rbegin(), property.vendor.rend());
        list.insert(list.end(), property.key.rbegin(), property.key.rend());
        AppendNumber(list, uint32_t{0}, false);
        AppendNumber(list, static_cast<uint32_t>(lengthCountsPadding ? data.size() : property.data.size()), false);
        list.insert(list.end(), data.begin(), data.end());
    }
    return list;
}

// Codes in data stand reversed, as everywhere in the list.
const Property kKind = {"8BIM", "kind", "MFB8"};
const Property kEntry = {"8BIM", "8664", "PluginMain"};

TEST(PropertyList, FindsTheEntryPointWhateverTheLengthsCount) {
    const Property foreign = {"xxxx", "8664", "Wrong"};
    for (bool padded : {true, false}) {
        EXPECT_EQ(EntryPointName(MakeList({kKind, foreign, {"8BIM", "name", "\5melts"}, kEntry}, padded)),
                  "PluginMain");
    }
}

TEST(PropertyList, RefusesOtherPluginsAndDamage) {
    EXPECT_THROW(EntryPointName(MakeList({kEntry}, true)), ToolError);
    EXPECT_THROW(EntryPointName(MakeList({{"8BIM", "kind", "MFX8"}, kEntry}, true)), ToolError);
    EXPECT_THROW(EntryPointName(MakeList({kKind}, true)), ToolError);
    // Cut off anywhere: refused, and never read past the end. Only the padding at the end can be spared.
    const Bytes whole = MakeList({kKind, kEntry}, false);
    for (size_t size = 0; size + 2 < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_THROW(EntryPointName(cut), ToolError) << size;
    }
}

}  // namespace
}  // namespace stairmelt
