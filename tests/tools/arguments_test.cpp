#include "tools/arguments.h"

#include <gtest/gtest.h>

#include "tools/file_bytes.h"

namespace stairmelt {
namespace {

TEST(Arguments, OptionsStandAnywhereAndTheLastOneCounts) {
    const Arguments arguments = ParseArguments({"--bias", "-5", "a.png", "--threshold", "2147483647", "--dialog",
                                                "b.tif", "--bias", "7", "--plugin", "x y.8bf", "--settings", "s"});
    EXPECT_EQ(arguments.in, "a.png");
    EXPECT_EQ(arguments.out, "b.tif");
    EXPECT_EQ(arguments.bias, 7);
    EXPECT_EQ(arguments.threshold, 2147483647);
    EXPECT_FALSE(arguments.softness.has_value());
    EXPECT_TRUE(arguments.dialog);
    EXPECT_EQ(arguments.plugin, "x y.8bf");
    EXPECT_EQ(arguments.settings, "s");
}

TEST(Arguments, ValuesCanFollowAnEqualsSign) {
    const Arguments arguments = ParseArguments({"--bias=-5", "--plugin=--a=b", "a", "--repeat=10000", "--", "--x=1"});
    EXPECT_EQ(arguments.bias, -5);
    EXPECT_EQ(arguments.plugin, "--a=b");
    EXPECT_EQ(arguments.repeat, 10000);
    EXPECT_EQ(arguments.out, "--x=1");
}

TEST(Arguments, ManyPicturesGoWithADirectory) {
    const Arguments arguments = ParseArguments(
        {"--out", "dir", "a.png", "--jobs", "64", "*.tif", "--skip-existing", "--files", "list", "--files", "-"});
    EXPECT_EQ(arguments.outDirectory, "dir");
    EXPECT_EQ(arguments.jobs, 64);
    EXPECT_TRUE(arguments.skipExisting);
    EXPECT_EQ(arguments.files, (std::vector<std::string>{"a.png", "*.tif"}));
    EXPECT_EQ(arguments.lists, (std::vector<std::filesystem::path>{"list", "-"}));
    EXPECT_EQ(ParseArguments({"--out", "dir", "a"}).jobs, 1);
    EXPECT_FALSE(ParseArguments({"a", "b"}).outDirectory.has_value());
}

TEST(Arguments, NamesLikeOptionsFollowTwoDashes) {
    const Arguments arguments = ParseArguments({"--", "--bias", "\xC3\xA9\xE2\x82\xAC.png"});
    EXPECT_EQ(arguments.in, "--bias");
    EXPECT_EQ(PathText(arguments.out), "\xC3\xA9\xE2\x82\xAC.png");
    EXPECT_TRUE(ParseArguments({"--about", "--plugin", "p.8bf"}).about) << "takes no files";
}

TEST(Arguments, RefusesWhatItDoesNotUnderstand) {
    const std::vector<std::string> cases[] = {
        {},
        {"a"},
        {"a", "b", "c"},
        {"a", "b", "--bias"},
        {"--bias", "--", "a", "b"},
        {"a", "b", "--dialog=1"},
        {"a", "b", "--bias="},
        {"a", "b", "--bias", "1.5"},
        {"a", "b", "--bias", "2147483648"},
        {"a", "b", "--bias", "7x"},
        {"a", "b", "-t"},
        {"a", "b", "--about"},
        {"--out", "dir", "--about"},
        {"a", "b", "--repeat"},
        {"a", "b", "--repeat", "0"},
        {"a", "b", "--repeat", "10001"},
        {"a", "b", "--repeat", "3", "--dialog"},
        {"--out", "dir"},
        {"--out"},
        {"--out", "dir", "a", "--dialog"},
        {"--out", "dir", "a", "--repeat", "3"},
        {"--out", "dir", "a", "--jobs", "0"},
        {"--out", "dir", "a", "--jobs", "65"},
        {"a", "b", "--jobs", "2"},
        {"a", "b", "--skip-existing"},
        {"a", "b", "--files", "list"},
    };
    for (const std::vector<std::string>& words : cases) {
        EXPECT_THROW(ParseArguments(words), UsageError) << testing::PrintToString(words);
    }
}

}  // namespace
}  // namespace stairmelt
