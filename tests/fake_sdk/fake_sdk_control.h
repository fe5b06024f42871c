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
#include "tests/fake_sdk/fake_sdk.h"

/// Loads one variant for the life of the process (so that stack traces keep their names) and puts
/// it into its first state. The library is the same one that the application loads: all objects of
/// a variant steer one state.
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

    void script(const std::string& lines) { m_script(lines.c_str()); }
    void release() { script("release"); }
    void press(int button) { script("button|" + std::to_string(button)); }
    bool scanning() const { return m_scanning() != 0; }

    std::vector<FakeCall> calls() const;
    std::vector<FakeCall> callsOf(const std::string& entry) const;
    /// Arguments of the last call; the test fails when there is none.
    std::vector<std::string> lastCall(const std::string& entry) const;
    /// Names of the entries in call order.
    std::vector<std::string> callOrder() const;
    int count(const std::string& entry) const;
    /// The last record that was handed over; the test fails when there is none.
    ImageParam lastImageParam() const;
    FileParam lastFileParam() const;

private:
    std::string m_file;
    void (*m_script)(const char*) = nullptr;
    void (*m_calls)(std::vector<FakeCall>*) = nullptr;
    int (*m_scanning)() = nullptr;
};
