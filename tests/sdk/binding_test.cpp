#include "app/install_paths.h"
#include "sdk/COrva_SDK.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/sandbox.h"

#include <gmock/gmock.h>

#include <cstring>

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::StartsWith;

namespace {

using Variant = FakeSdk::Variant;

// A record in which every byte differs from its neighbours, the padding too.
template <typename Record>
Record patterned()
{
    Record record;
    unsigned char bytes[sizeof record];
    for (std::size_t i = 0; i < sizeof record; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + 3);
    }
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

void stateCallback(int /*state*/, int /*page*/, std::string /*file*/) { }
int errorCallback(int /*code*/)
{
    return 0;
}

} // namespace

TEST(LoadDll, withoutALibraryNothingIsBoundAndTheReasonIsPrinted)
{
    const Sandbox sandbox;
    COrva_SDK sdk;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(sdk.LoadDll(), -404);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed,
        StartsWith(std::string("chdir return 0\n") + install_paths::kScannerLibrary + "\ndlerror() "
            + install_paths::kScannerLibrary + ": cannot open shared object"));

    EXPECT_EQ(sdk.Scan(), -404);
    writeBytes(install_paths::kScannerLibrary, "not a shared object");
    EXPECT_EQ(sdk.LoadDll(), -404);
}

TEST(LoadDll, bindsTheInstalledLibrary)
{
    const Sandbox sandbox;
    const FakeSdk fake;
    fake.install();
    COrva_SDK sdk;
    EXPECT_EQ(sdk.LoadDll(), 0);
    EXPECT_EQ(sdk.Init(), 0);
    EXPECT_EQ(sdk.SetMultiFeed(true), -404) << "bound with no library";
    EXPECT_EQ(sdk.UnInit(), 0);
}

TEST(LoadDll, optionalEntriesMayBeMissingAndOnlyThose)
{
    const FakeSdk fake(Variant::kWithoutOptional);
    COrva_SDK sdk;
    ASSERT_EQ(sdk.LoadDll(fake.file().c_str()), 0);
    char text[64] = {};
    EXPECT_EQ(sdk.GetScannerClass(text), -404);
    EXPECT_EQ(sdk.SetColorMode(1), -404);
    EXPECT_EQ(sdk.GetPaperName(0, text), -404);
    EXPECT_EQ(sdk.GetScanSourceCount(), 3) << "the others are there";
    sdk.UnInit();
}

TEST(LoadDll, aMissingRequiredEntryLeavesTheOthersBound)
{
    const FakeSdk fake(Variant::kWithoutScan);
    COrva_SDK sdk;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(sdk.LoadDll(fake.file().c_str()), -401);
    EXPECT_THAT(
        ::testing::internal::GetCapturedStdout(), EndsWith(".so\nGet Orva_SDK func failed\n"));
    EXPECT_EQ(sdk.Scan(), -404);
    EXPECT_EQ(sdk.GetScannerCount(), 1);
    sdk.UnInit();
}

TEST(UnInit, shutsTheLibraryDownOnceAndForgetsIt)
{
    const FakeSdk fake;
    COrva_SDK sdk;
    ASSERT_EQ(sdk.LoadDll(fake.file().c_str()), 0);
    EXPECT_EQ(sdk.UnInit(), 0);
    EXPECT_EQ(sdk.GetScannerCount(), -404);
    EXPECT_EQ(sdk.UnInit(), 0);
    EXPECT_EQ(fake.count("UnInit"), 1);
    ASSERT_EQ(sdk.LoadDll(fake.file().c_str()), 0) << "and it can be loaded again";
    sdk.UnInit();
}

TEST(Forwarders, handTheRecordsOverByteForByte)
{
    FakeSdk fake;
    COrva_SDK sdk;
    ASSERT_EQ(sdk.LoadDll(fake.file().c_str()), 0);
    const auto image = patterned<ImageParam>();
    const auto file = patterned<FileParam>();
    EXPECT_EQ(sdk.SetImageParam(image), 0);
    EXPECT_EQ(sdk.SetFileParam(file), 0);
    const ImageParam gotImage = fake.lastImageParam();
    const FileParam gotFile = fake.lastFileParam();
    static_assert(sizeof gotImage == 68 && sizeof gotFile == 312);
    EXPECT_EQ(std::memcmp(&gotImage, &image, 68), 0);
    EXPECT_EQ(std::memcmp(&gotFile, &file, 312), 0);

    fake.script("filetypes|clear\nfiletype|-5|6|140|11\nfiletype|1|2|3|22\n");
    std::vector<stFileTypeParam> rows;
    EXPECT_EQ(sdk.GetImageParam(rows), 0);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].nDefBrightness, -5);
    EXPECT_EQ(rows[0].nDefGamma10, 11);
    EXPECT_EQ(rows[1].nDefThreshold, 3);
    sdk.UnInit();
}

TEST(Forwarders, passArgumentsAndResultsUnchanged)
{
    FakeSdk fake;
    COrva_SDK sdk;
    ASSERT_EQ(sdk.LoadDll(fake.file().c_str()), 0);
    sdk.SelectScanner(0);
    sdk.SetPreFeed(true, 1.25F);
    sdk.SetPaperSize(0.5, -1.0, 210.0, 297.125, 4);
    sdk.SetResolution(300, 600);
    sdk.SetScannerTime(-1, 240);
    sdk.SetLogInfo(true, "/日志/a b.log");
    sdk.UpLoad(3, "tab\there");
    sdk.SetStateCallback(stateCallback, nullptr);
    sdk.SetErrorCallback(errorCallback, nullptr);
    sdk.SetErrorCallback(nullptr, nullptr);
    const auto argumentsOf = [&](const char* entry) { return fake.callsOf(entry).at(0).arguments; };
    EXPECT_THAT(argumentsOf("SelectScanner"), ElementsAre("0"));
    EXPECT_THAT(argumentsOf("SetPrefeed"), ElementsAre("1", "1.25")) << "the symbol's own spelling";
    EXPECT_THAT(argumentsOf("SetPaperSize"), ElementsAre("0.5", "-1", "210", "297.125", "4"));
    EXPECT_THAT(argumentsOf("SetResolution"), ElementsAre("300", "600"));
    EXPECT_THAT(argumentsOf("SetScannerTime"), ElementsAre("-1", "240"));
    EXPECT_THAT(argumentsOf("SetLogInfo"), ElementsAre("1", "/日志/a b.log"));
    EXPECT_THAT(argumentsOf("UpLoad"), ElementsAre("3", "tab\there"));
    EXPECT_THAT(argumentsOf("SetStateCallback"), ElementsAre("set", "null"));
    EXPECT_THAT(fake.callsOf("SetErrorCallback").at(1).arguments, ElementsAre("null", "null"));

    fake.script("result|HavePaper|-43\nresult|Init|-23|1\n");
    EXPECT_EQ(sdk.HavePaper(), -43);
    EXPECT_EQ(sdk.Init(), -23);
    EXPECT_EQ(sdk.Init(), 0);

    sdk.UnInit();
}
