// The declaration resources and exports of the built library, read back and compared with what the code uses.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/parameters.h"
#include "resources/plugin_ids.h"

namespace stairmelt {

namespace {

HMODULE LoadedPlugin() {
    static const HMODULE library = LoadLibraryA(STAIRMELT_PLUGIN_FILE);
    return library;
}

// Reads a resource's bytes from front to back. Reading past the end fails the test and gives zeros.
class Reader {
public:
    explicit Reader(const char* type) {
        const HRSRC found = FindResourceA(LoadedPlugin(), MAKEINTRESOURCEA(PLUGIN_RESOURCE_ID), type);
        if (found == nullptr) {
            ADD_FAILURE() << "no resource " << type;
            return;
        }
        const char* const data = static_cast<const char*>(LockResource(LoadResource(LoadedPlugin(), found)));
        bytes.assign(data, SizeofResource(LoadedPlugin(), found));
    }
    explicit Reader(std::string data) : bytes(std::move(data)) {}

    std::string Bytes(size_t count) {
        if (bytes.size() - at < count) {
            ADD_FAILURE() << "data ends early";
            return std::string(count, '\0');
        }
        at += count;
        return bytes.substr(at - count, count);
    }
    uint32_t Number(size_t size) {
        uint32_t value = 0;
        const std::string data = Bytes(size);
        std::memcpy(&value, data.data(), size);
        return value;
    }
    std::string Pascal() { return Bytes(Number(1)); }
    size_t Left() const { return bytes.size() - at; }

private:
    std::string bytes;
    size_t at = 0;
};

struct Property {
    uint32_t key;
    std::string data;
};

std::vector<Property> ReadProperties() {
    Reader list("PIPL");
    EXPECT_EQ(list.Number(2), 1u);
    EXPECT_EQ(list.Number(4), 0u);
    std::vector<Property> properties(list.Number(4));
    for (Property& property : properties) {
        EXPECT_EQ(list.Number(4), kPhotoshopSignature) << "vendor";
        property.key = list.Number(4);
        EXPECT_EQ(list.Number(4), 0u);
        const uint32_t length = list.Number(4);
        EXPECT_EQ(length % 4, 0u);
        property.data = list.Bytes(length);
    }
    EXPECT_EQ(list.Left(), 0u);
    return properties;
}

std::string Padded(const std::string& text, size_t size) {
    std::string padded = text;
    padded.resize(size);
    return padded;
}

}  // namespace

TEST(Resources, PropertiesDeclareWhatTheCodeDoes) {
    const std::vector<Property> properties = ReadProperties();
    const char* const order[] = {"kind", "name", "catg", "vers", "8664", "mode",
                                 "hstm", "enbl", "ms32", "flly", "fici"};
    ASSERT_EQ(properties.size(), std::size(order));
    std::map<std::string, std::string> data;
    for (size_t i = 0; i < properties.size(); ++i) {
        char code[5] = {};
        std::memcpy(code, order[i], 4);
        EXPECT_EQ(properties[i].key, FourCharCode(code)) << i;
        data[order[i]] = properties[i].data;
    }
    EXPECT_EQ(Reader(data["kind"]).Number(4), FourCharCode("8BFM"));
    EXPECT_EQ(data["name"], Padded("\x09stairmelt", 12));
    EXPECT_EQ(data["catg"], Padded("\005NORVA", 8));
    EXPECT_EQ(Reader(data["vers"]).Number(4), 0x00040000u);
    EXPECT_EQ(data["mode"], std::string("\x59\xC0\0\0", 4));
    EXPECT_EQ(data["enbl"], Padded("in (PSHOP_ImageMode, RGBMode, GrayScaleMode,CMYKMode, HSLMode, HSBMode, "
                                   "MultichannelMode,DuotoneMode, LabMode, RGB48Mode, Gray16Mode) "
                                   "||PSHOP_ImageDepth == 16 || PSHOP_ImageDepth == 32",
                                   188));
    Reader sizes(data["ms32"]);
    EXPECT_EQ(sizes.Number(4), 2000000u);
    EXPECT_EQ(sizes.Number(4), 2000000u);
    EXPECT_EQ(Reader(data["flly"]).Number(4), 0x80u);
    std::string cases;
    for (int i = 0; i < 7; ++i) cases += std::string("\1\1\0\0", 4);
    EXPECT_EQ(data["fici"], cases);

    // The entry point's name is that of an export.
    EXPECT_EQ(data["8664"], Padded("PluginMain", 12));
    EXPECT_NE(GetProcAddress(LoadedPlugin(), data["8664"].c_str()), nullptr);

    Reader terminology(data["hstm"]);
    EXPECT_EQ(terminology.Number(4), 0u);
    EXPECT_EQ(terminology.Number(4), static_cast<uint32_t>(CODE_PLUGIN));
    EXPECT_EQ(terminology.Number(4), FourCharCode("stml"));
    EXPECT_EQ(terminology.Number(2), static_cast<uint32_t>(PLUGIN_RESOURCE_ID));
    EXPECT_EQ(terminology.Bytes(42), Padded("b5db97bc-0172-4ae0-882e-f3b6e9ed0d20", 42)) << "the key of stored values";
    EXPECT_EQ(terminology.Left(), 0u);
}

TEST(Resources, TerminologyDeclaresTheKeysOfTheCode) {
    Reader aete("AETE");
    EXPECT_EQ(aete.Number(2), 1u);
    EXPECT_EQ(aete.Bytes(2), std::string("\1\0", 2)) << "version";
    EXPECT_EQ(aete.Number(4), 0u) << "language and script";
    EXPECT_EQ(aete.Number(2), 1u) << "suites";
    EXPECT_EQ(aete.Pascal(), "NORVA");
    EXPECT_EQ(aete.Pascal(), "N-ORVAWORKS");
    EXPECT_EQ(aete.Number(4), FourCharCode("stml"));
    EXPECT_EQ(aete.Number(4), 0x00010001u) << "level and version";
    EXPECT_EQ(aete.Number(2), 1u) << "events";
    EXPECT_EQ(aete.Pascal(), "stairmelt");
    EXPECT_EQ(aete.Pascal(), "NORVA stairmelt plug-in");
    EXPECT_EQ(aete.Number(4), FourCharCode("stml"));
    EXPECT_EQ(aete.Number(4), FourCharCode("stml"));
    EXPECT_EQ(aete.Number(4), FourCharCode("null"));
    EXPECT_EQ(aete.Pascal(), "");
    EXPECT_EQ(aete.Number(2), 0u);
    EXPECT_EQ(aete.Number(4), FourCharCode("#ImR"));
    EXPECT_EQ(aete.Pascal(), "");
    EXPECT_EQ(aete.Bytes(2), std::string("\0\xB0", 2));

    const char* const texts[][2] = {
        {"color threshold", "edge detection threshold value"},
        {"softness", "gradation amount"},
        {"bias", "gradation curve bias"},
        {"window pos x", "parameter window position x"},
        {"window pos y", "parameter window position y"},
    };
    ASSERT_EQ(aete.Number(2), std::size(kParameters));
    for (size_t i = 0; i < std::size(kParameters); ++i) {
        EXPECT_EQ(aete.Pascal(), texts[i][0]);
        EXPECT_EQ(aete.Number(4), kParameters[i].key);
        EXPECT_EQ(aete.Number(4), kTypeInteger);
        EXPECT_EQ(aete.Pascal(), texts[i][1]);
        EXPECT_EQ(aete.Number(2), 0u);
    }
    EXPECT_EQ(aete.Bytes(6), std::string(6, '\0')) << "classes, operators, enumerations";
    EXPECT_EQ(aete.Left(), 0u);
}

TEST(Resources, FilePropertiesShowNameAndVersion) {
    const std::pair<const char*, const char*> files[] = {
        {STAIRMELT_PLUGIN_FILE, "stairmelt filter for Adobe Photoshop"},
        {STAIRMELT_TOOL_FILE, "Runs stairmelt on picture files"}};
    for (const auto& [file, description] : files) {
        std::vector<char> info(GetFileVersionInfoSizeA(file, nullptr));
        ASSERT_TRUE(GetFileVersionInfoA(file, 0, static_cast<DWORD>(info.size()), info.data())) << file;
        void* found = nullptr;
        UINT size = 0;
        ASSERT_TRUE(VerQueryValueA(info.data(), "\\", &found, &size)) << file;
        const auto* const numbers = static_cast<const VS_FIXEDFILEINFO*>(found);
        EXPECT_EQ(numbers->dwFileVersionMS, 0x00010000u);
        EXPECT_EQ(numbers->dwFileVersionLS, 0x00020010u);
        const char* const texts[][2] = {
            {"FileVersion", "1.0.2"},         {"ProductVersion", "1.0.2"},
            {"ProductName", "stairmelt"},     {"CompanyName", "NORVA"},
            {"FileDescription", description}, {"LegalCopyright", "Copyright (C) 2026 N-ORVAWORKS"}};
        ASSERT_TRUE(VerQueryValueA(info.data(), "\\VarFileInfo\\Translation", &found, &size)) << file;
        EXPECT_EQ(*static_cast<const DWORD*>(found), 0x04B00409u) << file;
        for (const auto& [name, text] : texts) {
            const std::string place = std::string("\\StringFileInfo\\040904B0\\") + name;
            ASSERT_TRUE(VerQueryValueA(info.data(), place.c_str(), &found, &size)) << file << ", " << name;
            EXPECT_STREQ(static_cast<const char*>(found), text) << file << ", " << name;
        }
    }
}

}  // namespace stairmelt
