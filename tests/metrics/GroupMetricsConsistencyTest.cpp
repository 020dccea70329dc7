#include "MetricsTestSupport.h"

namespace velmorant::testing {
namespace {

using GroupMetricsConsistency = MetricsTest;

TEST_F(GroupMetricsConsistency, TrendAgainstThePreviousAverage) {
    start(local(2024, 3, 2, 10, 0));
    const Date startDate = local(2024, 2, 24, 0, 0);
    // stars nullptr: the current average's clock time.
    struct { double a, p; bool flag; const char *trend, *stars; } cases[] = {
        {81000, 80940, false, "Consistent", ""}, {81000, 81060, false, "Consistent", ""},  // a minute either way
        {81000, 80939, false, "1m later", "1m"}, {81000, 82800, false, "30m earlier", "30m"},
        {86400, 81000, true, "90m later", nullptr},
    };
    for (const auto& c : cases) {
        put("lastConsistency", Value(c.flag));
        put("bankDict", Value(Dictionary{{"startDate", Value(startDate)}, {"averageBedtime", Value(c.a)},
                                         {"prevAverageBedtime", Value(c.p)}}));
        auto r = m->requestConsistencyDict();
        const Date current = startDate.dateByAddingTimeInterval(c.a);
        // With the flag the previous average heads the record.
        expectTexts(*r, {{"trendString", c.trend}, {"starsLabel", c.stars ? c.stars : dayTime(current)},
                         {"avgBedtimeDateString", dayTime(c.flag ? startDate.dateByAddingTimeInterval(c.p) : current)}});
        EXPECT_FLOAT_EQ(single(*r, "bedTrend"), static_cast<float>(c.a - c.p));
    }
    put("bankDict", Value(Dictionary{{"startDate", Value("2024-02-24")}, {"averageBedtime", Value(81000)}}));
    EXPECT_FALSE(m->requestConsistencyDict());
}

}  // namespace
}  // namespace velmorant::testing
