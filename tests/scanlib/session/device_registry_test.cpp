#include "scanlib/session/device_registry.h"
#include "tests/scanlib/session/fakes.h"

#include <set>

using namespace fakes;
using namespace orva;

namespace {

DeviceIdentity identity(const std::string& key, const std::string& name)
{
    DeviceIdentity result;
    result.key = key;
    result.name = name;
    return result;
}

std::string nameAt(DeviceRegistry& registry, int index)
{
    DeviceIdentity result;
    return registry.identity(index, result) ? result.name : "(none)";
}

} // namespace

TEST(DeviceRegistry, equalModelsGetNumbersThatFitIntoAName)
{
    DeviceScript script;
    const std::string longName = std::string(59, 'x') + "扫描仪";
    std::vector<std::unique_ptr<Driver>> drivers;
    drivers.push_back(std::make_unique<FakeDriver>(script,
        std::vector<DeviceIdentity> { identity("a", "Model"), identity("b", "Model"),
            identity("c", longName), identity("d", longName), identity("e", "Model") }));
    DeviceRegistry registry(std::move(drivers), 1s);
    registry.startListing();
    EXPECT_EQ(registry.count(), 5);
    EXPECT_EQ(nameAt(registry, 0), "Model");
    EXPECT_EQ(nameAt(registry, 1), "Model #2");
    EXPECT_EQ(nameAt(registry, 4), "Model #3");
    EXPECT_EQ(nameAt(registry, 2), std::string(59, 'x') + "扫");
    EXPECT_EQ(nameAt(registry, 3), std::string(59, 'x') + " #2");
    EXPECT_EQ(nameAt(registry, 5), "(none)");
    EXPECT_EQ(nameAt(registry, -1), "(none)");
    EXPECT_EQ(registry.create(7), nullptr);
}

TEST(DeviceRegistry, anIndexKeepsItsScannerWhenTheListIsMadeAgain)
{
    DeviceScript script;
    auto owned = std::make_unique<FakeDriver>(
        script, std::vector<DeviceIdentity> { identity("a", "One"), identity("b", "Two") });
    FakeDriver& driver = *owned;
    std::vector<std::unique_ptr<Driver>> drivers;
    drivers.push_back(std::move(owned));
    DeviceRegistry registry(std::move(drivers), 1s);
    registry.startListing();
    EXPECT_EQ(registry.count(), 2);
    driver.list = { identity("c", "Three"), identity("b", "Two") }; // One was unplugged
    registry.refresh(1h);
    EXPECT_EQ(registry.count(), 2) << "fresh enough";
    registry.refresh(0ms);
    EXPECT_EQ(registry.count(), 3);
    EXPECT_EQ(nameAt(registry, 0), "One");
    EXPECT_EQ(nameAt(registry, 1), "Two");
    EXPECT_EQ(nameAt(registry, 2), "Three");
}
