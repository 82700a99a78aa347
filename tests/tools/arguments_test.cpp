#include "tools/arguments.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "tools/file_bytes.h"

namespace stairmelt {
namespace {

TEST(Arguments, OptionsStandAnywhereAndTheLastOneCounts) {
    const Arguments arguments =
        ParseArguments({"--bias", "-5", "a.png", "--threshold", "2147483647", "--dialog", "--bias=7", "--plugin=--a=b",
                        "--settings", "s", "--", "--\xC3\xA9=1.png"});
    EXPECT_EQ(arguments.in, "a.png");
    EXPECT_EQ(PathText(arguments.out), "--\xC3\xA9=1.png");
    EXPECT_EQ(arguments.bias, 7);
    EXPECT_EQ(arguments.threshold, 2147483647);
    EXPECT_FALSE(arguments.softness.has_value());
    EXPECT_TRUE(arguments.dialog);
    EXPECT_EQ(arguments.plugin, "--a=b");
    EXPECT_EQ(arguments.settings, "s");
    EXPECT_EQ(ParseArguments({"a", "b", "--repeat=10000", "--softness", "3"}).Request().repeat, 10000);
    EXPECT_TRUE(ParseArguments({"--about", "--plugin", "p.8bf"}).about) << "takes no files";
    EXPECT_TRUE(ParseArguments({"--help"}).help) << "takes no files";
    EXPECT_TRUE(ParseArguments({"--version"}).version);
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
}

TEST(Arguments, RefusesWhatItDoesNotUnderstand) {
    for (const std::string line : {"",
                                   "a",
                                   "a b c",
                                   "a b --bias",
                                   "--bias -- a b",
                                   "a b --dialog=1",
                                   "a b --bias=",
                                   "a b --bias 1.5",
                                   "a b --bias 2147483648",
                                   "a b --bias 7x",
                                   "a b -t",
                                   "a b --about",
                                   "--out dir --about",
                                   "a b --repeat 0",
                                   "a b --repeat 10001",
                                   "a b --repeat 3 --dialog",
                                   "--out dir",
                                   "--out",
                                   "--out dir a --dialog",
                                   "--out dir a --repeat 3",
                                   "--out dir a --jobs 0",
                                   "--out dir a --jobs 65",
                                   "a b --jobs 2",
                                   "a b --skip-existing",
                                   "a b --files list"}) {
        std::istringstream stream(line);
        const std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
        EXPECT_THROW(ParseArguments(words), UsageError) << line;
    }
}

}  // namespace
}  // namespace stairmelt
