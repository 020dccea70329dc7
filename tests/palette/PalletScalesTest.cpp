#include "PalletTesting.h"

namespace velmorant {
using palette::Pallet;

namespace {

using palette_test::expectHsb;
using palette_test::Hsb;
using palette_test::makePlatform;
using platform::Colour;

using ColourScale = Colour (Pallet::*)(float) const;

// Default hues 357, 34, 44, 128, 207 from worst to best; dark theme.
TEST(PalletScales, ColourBands) {
    const auto battery = &Pallet::colourForBatteryChargePercent, efficiency = &Pallet::efficiencyRatingColour,
               load = &Pallet::colourForLoadPercent, feeling = &Pallet::colourForFeelingPercent,
               soreness = &Pallet::colourForSorenessPercent, quality = &Pallet::colourForQualityWithPercent;
    const struct {
        ColourScale op;
        float in;
        Hsb want;
    } cases[] = {
        {battery, 2.5f, {207, 0.8, 1.0}},        {battery, 1.75f, {207, 0.8, 0.9}}, {battery, 1.5f, {207, 0.8, 0.8}},
        {battery, 1.4999f, {128, 0.8, 0.89994}}, {battery, 1.0f, {128, 0.8, 0.6}},  {battery, 0.85f, {44, 0.94, 0.8}},
        {battery, 0.9999f, {44, 0.94, 0.9499}},  {battery, 0.75f, {34, 0.8, 0.75}}, {battery, 0.0f, {357, 0.69, 0.7}},
        {battery, 0.8499f, {34, 0.8, 0.89985}},   {battery, 0.7499f, {357, 0.69, 0.89997333}},
        {battery, -1.0f, {357, 0.69, 0.7 - 0.8 / 3}},  // unclamped below the scale
        {efficiency, 90, {128, 0.8, 0.84}},   {efficiency, 85, {44, 0.94, 0.86}},  {efficiency, 80, {34, 0.8, 0.87}},
        {efficiency, 79, {357, 0.69, 0.896}}, {load, 0.3f, {205, 0.99, 0.99}},     {load, 0.31f, {60, 0.89, 0.75}},
        {load, 0.7f, {34, 0.99, 0.99}},       {load, 0.9f, {356, 0.8, 0.99}},      {load, 0.91f, {354, 0.99, 0.99}},
        {feeling, 0.28f, {356, 0.79, 0.84}},  {feeling, 0.29f, {200, 0.6, 0.8}},   {feeling, 0.69f, {134, 0.85, 0.6}},
        {soreness, 0.29f, {134, 0.85, 0.6}},  {soreness, 0.49f, {42, 0.96, 0.89}}, {soreness, 0.79f, {356, 0.79, 0.84}},
        {soreness, 0.8f, {354, 0.92, 0.98}},  {quality, 2.0f, {256, 0.55, 1.0}},   {quality, 1.5f, {256, 0.55, 1.0}},
        {quality, 0.75f, {256, 0.55, 0.85}},  {quality, 0.1f, {256, 0.55, 0.7}},
    };
    auto p = makePlatform();
    Pallet pallet(*p);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.in);
        expectHsb((pallet.*c.op)(c.in), c.want);
    }
    pallet.setDarkTheme(false);
    expectHsb(pallet.colourForDeepSleepWithPercent(0.75f), {256, 0.75, 0.75});
    expectHsb(pallet.colourForDeepSleepWithPercent(0.2f), {256, 0.75, 0.5});
}

// Scales that pick a point on the battery scale, given as its percentage, and the word ratings.
TEST(PalletScales, RatingPointsAndWords) {
    const auto ready = &Pallet::colourForReadyScore, temp = &Pallet::colourForWristTempScore,
               spO2 = &Pallet::colourForSpO2Reading, resp = &Pallet::colourForRespRateReading;
    const struct {
        ColourScale op;
        float in, percentage;
    } cases[] = {
        {ready, 1.51f, 160}, {ready, 1.5f, 140},  {ready, 1.2f, 120},   {ready, 0.96f, 120},   {ready, 0.95f, 110},
        {ready, 0.825f, 99}, {ready, 0.7f, 75},   {ready, 0.5f, 50},    {temp, 6, 70},         {temp, 5.99f, 90},
        {temp, 4, 105},      {temp, 3, 120},      {temp, 2.99f, 105},   {temp, 1, 90},         {temp, 0.99f, 70},
        {spO2, 95, 110},     {spO2, 94.99f, 99},  {spO2, 90, 99},       {spO2, 89.99f, 50},    {resp, 11.998f, 50},
        {resp, 11.999f, 110}, {resp, 20.498f, 110}, {resp, 20.499f, 50},
    };
    auto p = makePlatform();
    Pallet pallet(*p);
    for (const auto& c : cases) EXPECT_EQ((pallet.*c.op)(c.in), pallet.lightRatingColour(c.percentage)) << c.in;
    EXPECT_EQ(pallet.colourForRespRateGraphReading(11.999f), pallet.colourForRespRateLineGood());
    EXPECT_EQ(pallet.colourForRespRateGraphReading(20.499f), pallet.colourForRespRateLineBad());
    // Word ratings: looked up as string keys, with a fallback outside the known zones.
    EXPECT_EQ(pallet.emojiForFeeling(2.9f) + pallet.emojiForFeeling(3) + pallet.emojiForFeeling(7), "💩😐😄");
    EXPECT_EQ(pallet.textForSpeedZone(8) + pallet.textForSpeedZone(9) + pallet.textForSpeedZone(-1),
              "MinimalNothingNothing");
}

TEST(PalletScales, StarValues) {
    const auto ready = &Pallet::starsValueForReadyPercent, resp = &Pallet::starsValueForRespRate;
    const struct {
        float (Pallet::*op)(float) const;
        float in, want;
    } cases[] = {
        {ready, 3.0f, 6.99f}, {ready, 1.75f, 6.5f}, {ready, 1.5f, 6.0f},   {ready, 1.0f, 4.2f}, {ready, 0.95f, 4.0f},
        {ready, 0.825f, 3},   {ready, 0.7f, 2},     {ready, 0.6f, 1.5f},   {ready, 0.5f, 1},    {ready, 0.25f, 0.5f},
        {resp, 6, 1},         {resp, 12, 2},        {resp, 14.125f, 2.75f}, {resp, 16.25f, 3.5f},
        {resp, 18.375f, 4.25f}, {resp, 20.5f, 5},   {resp, 25, 5 + 9 / 9.5f}, {resp, 40, 6.99f},
        // The outer bounds are double: a float 11.99 or 20.49 lies just below them.
        {resp, 11.99f, 11.99f / 6}, {resp, 20.49f, 4.99f},
    };
    auto p = makePlatform();
    Pallet pallet(*p);
    for (const auto& c : cases) EXPECT_NEAR((pallet.*c.op)(c.in), c.want, 2e-6) << c.in;
}

TEST(PalletScales, WristTemperatureScore) {
    const struct {
        float value, baseline;
        bool fahrenheit;
        float score;
    } cases[] = {
        {36.5f, 36.5f, false, 3.5f}, {36.5f, 0, false, 0}, {0, 36.5f, false, 0},   {36.25f, 36, false, 4},
        {37, 36, false, 5},          {37.5f, 36, false, 6}, {39, 36, false, 7},     {35.75f, 36, false, 3},
        {35.5f, 36, false, 8 / 3.0f}, {35, 36, false, 2},   {34.25f, 36, false, 0.5f}, {34, 36, false, 0},
        {98.8f, 97, true, 5},
    };
    auto p = makePlatform();
    Pallet pallet(*p);
    for (const auto& c : cases) {
        p->standardUserDefaults()->setObject(platform::Value(c.fahrenheit), "tempF");
        EXPECT_NEAR(pallet.wristTempScoreForValue(c.value, c.baseline), c.score, 1e-4) << c.value;
    }
}

TEST(PalletScales, HeartRates) {
    const struct {
        char kind;  // 'r' resting, 'w' workout, 'a' against an average of 60
        float bpm;
        Hsb want;
    } cases[] = {
        {'r', 100, {357, 0.8, 1}},      {'r', 99, {270, 0.4, 0.67}},   {'r', 80, {270, 0.4, 0.67}},
        {'r', 55, {207, 0.75, 0.92}},   {'r', 54, {207, 0.65, 0.94}},  {'r', 50, {207, 0.65, 0.94}},
        {'r', 40, {354, 0.4, 0.75}},    {'r', 39, {354, 0.4, 0.5}},    {'w', 162, {357, 0.8, 1}},
        {'w', 161, {357, 0.69, 0.87}},  {'w', 126, {44, 0.94, 0.91}},  {'w', 108, {139, 0.82, 0.65}},
        {'w', 90, {171, 0.82, 0.55}},   {'w', 89, {270, 0.4, 0.67}},   {'a', 59.5f, {128, 0.8, 0.8}},
        {'a', 60, {128, 0.8, 0.7}},     {'a', 61, {44, 0.94, 0.9}},    {'a', 62, {44, 0.94, 0.8}},
        {'a', 63.5f, {34, 0.8, 0.8}},   {'a', 64.5f, {357, 0.69, 0.7}},
    };
    auto p = makePlatform();
    Pallet pallet(*p);
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.kind << c.bpm);
        expectHsb(c.kind == 'r'   ? pallet.colourForRestingBPM(c.bpm)
                  : c.kind == 'w' ? pallet.colourForWorkoutBPM(c.bpm)
                                  : pallet.heartRatingColourForBPM(c.bpm, 60),
                  c.want);
    }
    // Thresholds are read again on every call.
    p->standardUserDefaults()->setObject(platform::Value(90), "restingElevated");
    expectHsb(pallet.colourForRestingBPM(95), {357, 0.8, 1});
    p->standardUserDefaults()->setObject(platform::Value(200), "maxHeartRate");
    expectHsb(pallet.colourForWorkoutBPM(162), {357, 0.69, 0.87});
}

}  // namespace
}  // namespace velmorant
