#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Translations.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace VorControl::ControlProtocol;

namespace {

constexpr const char* DropsText =
    "Display detected message drops. Try reducing the scan rate of the device to avoid message drops.";

class Metrics : public Vor::Properties::Structure {
public:
    Metrics()
        : Structure(true) {
        Register("dropCount", dropCount);
    }

    Vor::Properties::Value<long long> dropCount{0};
};

class DropService : public ProtocolBase {
public:
    explicit DropService(const ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {}

    void Start() override {}
    void Stop() override {}

    void BindMetrics() {
        ProtocolInitParams init;
        init.metrics = &metrics;
        Init(init);
    }

    using ProtocolBase::CheckControlDrops;
    using ProtocolBase::ClearAllProblems;
    using ProtocolBase::LastDropCount;

    Metrics metrics;
};

class ProtocolProblemsTest : public testing::Test {
protected:
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const auto& problem : environ.application.problems.List()) {
            EXPECT_EQ(problem.severity, 0);
            EXPECT_EQ(problem.title, "VorControl");
            texts.push_back(problem.text);
        }
        return texts;
    }

    Tests::HostEnviron environ;
    DropService service{environ.Record("type", "Display")};
};

} // namespace

TEST_F(ProtocolProblemsTest, DropsSinceTheStartOfTheScanAreAProblem) {
    service.BindMetrics();
    service.metrics.dropCount = 5;
    service.OnPreStartScan();
    service.CheckControlDrops(nullptr);
    EXPECT_TRUE(Texts().empty());
    service.metrics.dropCount = 6;
    VorGetText::GetInstance().ForgetCalls();
    service.CheckControlDrops(nullptr);
    EXPECT_EQ(Texts(), std::vector<std::string>{DropsText});
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "%1$s detected message drops. Try reducing the scan rate of the "
                                                   "device to avoid message drops."));
    EXPECT_EQ(service.LastDropCount(), 5U);
}

TEST_F(ProtocolProblemsTest, AGivenTextStandsAsItIs) {
    service.BindMetrics();
    service.metrics.dropCount = 1;
    service.CheckControlDrops("100% lost %s");
    EXPECT_EQ(Texts(), std::vector<std::string>{"100% lost %s"});
    service.CheckControlDrops("");
    EXPECT_EQ(Texts(), std::vector<std::string>{""});
}

TEST_F(ProtocolProblemsTest, EachCheckRaisesTheProblemAnewInPlaceOfTheFormerOne) {
    service.BindMetrics();
    service.metrics.dropCount = 1;
    service.CheckControlDrops(nullptr);
    const auto first = environ.application.problems.List();
    service.CheckControlDrops(nullptr);
    const auto second = environ.application.problems.List();
    ASSERT_EQ(first.size(), 1U);
    ASSERT_EQ(second.size(), 1U);
    EXPECT_NE(first[0].handle, second[0].handle);
}

TEST_F(ProtocolProblemsTest, TheProblemStaysUntilACheckAfterTheNextStartOfAScan) {
    service.BindMetrics();
    service.metrics.dropCount = 1;
    service.CheckControlDrops(nullptr);
    service.OnPreStartScan();
    EXPECT_EQ(Texts().size(), 1U);
    service.CheckControlDrops(nullptr);
    EXPECT_TRUE(Texts().empty());
}

TEST_F(ProtocolProblemsTest, ACountThatFallsLowersTheBaseAndWithdrawsTheProblem) {
    service.BindMetrics();
    service.metrics.dropCount = 7;
    service.OnPreStartScan();
    service.metrics.dropCount = 9;
    service.CheckControlDrops(nullptr);
    EXPECT_EQ(Texts().size(), 1U);
    service.metrics.dropCount = 2;
    service.CheckControlDrops(nullptr);
    EXPECT_TRUE(Texts().empty());
    EXPECT_EQ(service.LastDropCount(), 2U);
    service.metrics.dropCount = 3;
    service.CheckControlDrops(nullptr);
    EXPECT_EQ(Texts().size(), 1U);
    EXPECT_EQ(service.LastDropCount(), 2U);
}

TEST_F(ProtocolProblemsTest, AScanThatStartsDuringACheckKeepsItsBase) {
    /// Another thread starts a scan while the value is read for the check.
    class Count : public Vor::Properties::Value<long long> {
    public:
        using Value::operator=;
        const long long& Get() const override {
            if (const auto call = std::exchange(onRead, {})) {
                call();
                return former;
            }
            return Value::Get();
        }
        mutable std::function<void()> onRead;
        long long former = 2; ///< what the check reads
    };
    class CountMetrics : public Vor::Properties::Structure {
    public:
        CountMetrics()
            : Structure(true) {
            Register("dropCount", dropCount);
        }
        Count dropCount;
    };
    class CountService : public DropService {
    public:
        using DropService::DropService;
        using ProtocolBase::Init;
    };
    CountMetrics metrics;
    CountService counting(environ.Record("counting", "Counting"));
    counting.Init({.metrics = &metrics});
    metrics.dropCount = 9;
    counting.OnPreStartScan();
    metrics.dropCount = 4;
    metrics.dropCount.onRead = [&] { counting.OnPreStartScan(); };
    counting.CheckControlDrops(nullptr);
    EXPECT_EQ(counting.LastDropCount(), 4U);
}

TEST_F(ProtocolProblemsTest, WithoutBoundMetricsNothingIsRaisedOrWithdrawn) {
    service.CheckControlDrops("lost");
    EXPECT_TRUE(Texts().empty());
    service.BindMetrics();
    service.metrics.dropCount = 1;
    service.CheckControlDrops("lost");
    class Unbound : public DropService {
    public:
        using DropService::DropService;
        using ProtocolBase::Init;
    };
    Unbound unbound(environ.Record("unbound", "Unbound"));
    unbound.BindMetrics();
    unbound.metrics.dropCount = 1;
    unbound.CheckControlDrops("unbound lost");
    unbound.Init({});
    unbound.CheckControlDrops("other");
    EXPECT_EQ(Texts(), (std::vector<std::string>{"lost", "unbound lost"}));
}

TEST_F(ProtocolProblemsTest, ClearingWithdrawsTheProblemsOfThisServiceOnly) {
    DropService other(environ.Record("other", "Other"));
    for (auto* const each : {&service, &other}) {
        each->BindMetrics();
        each->metrics.dropCount = 1;
    }
    service.CheckControlDrops("mine");
    other.CheckControlDrops("other");
    service.ClearAllProblems();
    EXPECT_EQ(Texts(), std::vector<std::string>{"other"});
    service.ClearAllProblems();
    EXPECT_EQ(Texts(), std::vector<std::string>{"other"});
}

TEST_F(ProtocolProblemsTest, AServiceThatGoesTakesItsProblemsAlong) {
    {
        DropService going(environ.Record("going", "Going"));
        going.BindMetrics();
        going.metrics.dropCount = 1;
        going.CheckControlDrops(nullptr);
        EXPECT_EQ(Texts().size(), 1U);
    }
    EXPECT_TRUE(Texts().empty());
}

TEST_F(ProtocolProblemsTest, WithoutAListOfProblemsTheBaseIsStillLowered) {
    VorControl::ControlHost host(environ.scanResults, environ.fakes.operations, environ.dataCache,
                                 environ.fakes.resources, environ.application.platform,
                                 environ.application.runtimeCache, nullptr, environ.scanEngine,
                                 environ.fakes.deviceOperations, 0, 0, 0, nullptr);
    auto record = environ.Record("silent", "Silent");
    record.controlHost = &host;
    DropService silent(record);
    silent.BindMetrics();
    silent.metrics.dropCount = 4;
    silent.OnPreStartScan();
    silent.metrics.dropCount = 5;
    silent.CheckControlDrops(nullptr);
    EXPECT_EQ(silent.LastDropCount(), 4U);
    silent.metrics.dropCount = 1;
    silent.CheckControlDrops(nullptr);
    EXPECT_EQ(silent.LastDropCount(), 1U);
    silent.ClearAllProblems();
    EXPECT_TRUE(Texts().empty());
}
