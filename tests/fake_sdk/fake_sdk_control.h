// Steers the scanner library of the tests from the test process.
//
//   Sandbox sandbox;
//   FakeSdk fake;
//   fake.install();                          // the application's LoadDll() finds it
//   fake.script("job|clear\nstep|wait\n");   // commands: fake_sdk.h
//   ... click, QTest::qWaitFor([&] { return fake.count("Scan") == 1; }) ...
//   fake.release();
#pragma once

#include "sdk/records.h"

#include <string>
#include <vector>

struct FakeCall
{
    long long atMs = 0; ///< since the library was loaded
    int thread = 0; ///< number of the calling thread
    std::string entry; ///< symbol of the library
    std::vector<std::string> arguments; ///< see fake_calls in fake_sdk.h
};

/// Loads one variant for the life of the process (so that stack traces keep their names) and puts
/// it into its factory state. The library is the same one that the application loads: all objects
/// of a variant steer one state.
class FakeSdk
{
public:
    enum class Variant
    {
        kComplete,
        kWithoutOptional,
        kWithoutScan,
        kNoDevices
    };

    explicit FakeSdk(Variant variant = Variant::kComplete);
    /// Ends a job that still waits, so that no thread outlives the test.
    ~FakeSdk();
    FakeSdk(const FakeSdk&) = delete;
    FakeSdk& operator=(const FakeSdk&) = delete;

    /// The shared object.
    const std::string& file() const { return m_file; }
    /// Puts a link to it where the application looks for its library. Needs a Sandbox.
    void install() const;
    static std::string fileOf(Variant variant);

    void script(const std::string& lines);
    void reset() { script("reset"); }
    void release() { script("release"); }
    void press(int button) { script("button|" + std::to_string(button)); }
    bool scanning() const;

    std::vector<FakeCall> calls() const;
    std::vector<FakeCall> callsOf(const std::string& entry) const;
    /// Names of the entries in call order.
    std::vector<std::string> callOrder() const;
    int count(const std::string& entry) const;
    /// The last record that was handed over; the test fails when there is none.
    ImageParam lastImageParam() const;
    FileParam lastFileParam() const;

private:
    std::string lastBytes(const std::string& entry) const;

    std::string m_file;
    void (*m_script)(const char*) = nullptr;
    std::size_t (*m_calls)(char*, std::size_t) = nullptr;
    int (*m_count)(const char*) = nullptr;
    int (*m_scanning)() = nullptr;
};

/// Reads a file in the form of fake_calls.
std::vector<FakeCall> parseFakeCalls(const std::string& text);
