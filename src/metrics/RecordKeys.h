#pragma once

// The names of the fields of the shared store and of the metric records, written once. They are
// the names the main app and the widgets already use, so their texts never change.

namespace velmorant::metrics::keys {

// In the shared store, where the main app leaves its figures; a record passes some figures on
// under the same name. "HasData" is the widgets' flag, behind their own prefix.
inline constexpr char kAverageBedtime[] = "averageBedtime";
inline constexpr char kAverageEfficiency[] = "averageEfficiency";
inline constexpr char kAverageRespRate[] = "averageRespRate";
inline constexpr char kAverageRespRate7[] = "averageRespRate7";
inline constexpr char kAverageSpO2[] = "averageSpO2";
inline constexpr char kAverageSpO27[] = "averageSpO27";
inline constexpr char kAverageWake[] = "averageWake";
inline constexpr char kBankDict[] = "bankDict";
inline constexpr char kBpmAverage[] = "bpmAverage";
inline constexpr char kBpmTodayVal[] = "bpmTodayVal";
inline constexpr char kCachedSleepBank[] = "cachedSleepBank";
inline constexpr char kCachedSleepBankUpdate[] = "cachedSleepBankUpdate";
inline constexpr char kHasData[] = "HasData";
inline constexpr char kHrvAverage[] = "hrvAverage";
inline constexpr char kHrvTodayVal[] = "hrvTodayVal";
inline constexpr char kKey[] = "key";
inline constexpr char kLastConsistency[] = "lastConsistency";
inline constexpr char kMaximumHours[] = "maximumHours";
inline constexpr char kMaxRespRate[] = "maxRespRate";
inline constexpr char kMaxRespRate7[] = "maxRespRate7";
inline constexpr char kMaxSpO2[] = "maxSpO2";
inline constexpr char kMaxSpO27[] = "maxSpO27";
inline constexpr char kMedianWake[] = "medianWake";
inline constexpr char kMinimumHours[] = "minimumHours";
inline constexpr char kMinRespRate[] = "minRespRate";
inline constexpr char kMinRespRate7[] = "minRespRate7";
inline constexpr char kMinSpO2[] = "minSpO2";
inline constexpr char kMinSpO27[] = "minSpO27";
inline constexpr char kNightHour[] = "nightHour";
inline constexpr char kOctaneDict[] = "octaneDict";
inline constexpr char kPrevAverageBedtime[] = "prevAverageBedtime";
inline constexpr char kRawHRVVal[] = "rawHRVVal";
inline constexpr char kRawRingRating[] = "rawRingRating";
inline constexpr char kRawRingValues[] = "rawRingValues";
inline constexpr char kRawSleepTime[] = "rawSleepTime";
inline constexpr char kRawSynchTime[] = "rawSynchTime";
inline constexpr char kRawWakingVal[] = "rawWakingVal";
inline constexpr char kReadyDict[] = "readyDict";
inline constexpr char kReadyStars[] = "readyStars";
inline constexpr char kRequiredHours[] = "requiredHours";
inline constexpr char kRespRateDict[] = "respRateDict";
inline constexpr char kSpO2Dict[] = "spO2Dict";
inline constexpr char kStartDate[] = "startDate";
inline constexpr char kVelmorantConfig[] = "velmorantConfig";
inline constexpr char kWatchTrackDict[] = "watchTrackDict";
inline constexpr char kWristTempAverage28[] = "wristTempAverage28";
inline constexpr char kWristTempKey[] = "wristTempKey";
inline constexpr char kWristTempScore[] = "wristTempScore";
inline constexpr char kWristTempTodayValue[] = "wristTempTodayValue";

// In the metric records GroupMetrics makes.
inline constexpr char kAdjustedBedTime[] = "adjustedBedTime";
inline constexpr char kAverageRespRateLabel[] = "averageRespRateLabel";
inline constexpr char kAverageRespRateLabel7[] = "averageRespRateLabel7";
inline constexpr char kAverageRespRateRangeLabel[] = "averageRespRateRangeLabel";
inline constexpr char kAverageRespRateRangeLabel7[] = "averageRespRateRangeLabel7";
inline constexpr char kAverageRespRateWidgetLabel[] = "averageRespRateWidgetLabel";
inline constexpr char kAverageSpO2Label[] = "averageSpO2Label";
inline constexpr char kAverageSpO2Label7[] = "averageSpO2Label7";
inline constexpr char kAverageSpO2RangeLabel[] = "averageSpO2RangeLabel";
inline constexpr char kAverageSpO2RangeLabel7[] = "averageSpO2RangeLabel7";
inline constexpr char kAvgBedtimeDateString[] = "avgBedtimeDateString";
inline constexpr char kBankBalance[] = "bankBalance";
inline constexpr char kBankForecast[] = "bankForecast";
inline constexpr char kBankPercent[] = "bankPercent";
inline constexpr char kBedTime[] = "bedTime";
inline constexpr char kBedTrend[] = "bedTrend";
inline constexpr char kDifColour[] = "difColour";
inline constexpr char kDifLabel[] = "difLabel";
inline constexpr char kHrvDifLabel[] = "hrvDifLabel";
inline constexpr char kHrvLabel[] = "hrvLabel";
inline constexpr char kHrvPoints[] = "hrvPoints";
inline constexpr char kHrvTint[] = "hrvTint";
inline constexpr char kLatestBedLabel[] = "latestBedLabel";
inline constexpr char kLatestBedTime[] = "latestBedTime";
inline constexpr char kMaxRespRateLabel[] = "maxRespRateLabel";
inline constexpr char kMaxSpO2Label[] = "maxSpO2Label";
inline constexpr char kMinRespRateLabel[] = "minRespRateLabel";
inline constexpr char kMinSpO2Label[] = "minSpO2Label";
inline constexpr char kPasteItem[] = "pasteItem";
inline constexpr char kPercentage[] = "percentage";
inline constexpr char kRating[] = "rating";
inline constexpr char kRingBPMLabel[] = "ringBPMLabel";
inline constexpr char kRingBPMPercent[] = "ringBPMPercent";
inline constexpr char kRingDeepLabel[] = "ringDeepLabel";
inline constexpr char kRingDeepPercent[] = "ringDeepPercent";
inline constexpr char kRingQualityLabel[] = "ringQualityLabel";
inline constexpr char kRingQualityPercent[] = "ringQualityPercent";
inline constexpr char kRingSleepLabel[] = "ringSleepLabel";
inline constexpr char kRingSleepPercent[] = "ringSleepPercent";
inline constexpr char kShowStages[] = "showStages";
inline constexpr char kSiriLabel[] = "siriLabel";
inline constexpr char kSleepRating[] = "sleepRating";
inline constexpr char kStarsLabel[] = "starsLabel";
inline constexpr char kStarsValue[] = "starsValue";
inline constexpr char kTimeUntilBed[] = "timeUntilBed";
inline constexpr char kTimeUntilBedLabel[] = "timeUntilBedLabel";
inline constexpr char kTimeUntilWakeLabel[] = "timeUntilWakeLabel";
inline constexpr char kTitle[] = "title";
inline constexpr char kTodaysReadinessStars[] = "todaysReadinessStars";
inline constexpr char kTodaysRespRateInfo[] = "todaysRespRateInfo";
inline constexpr char kTodaysSpO2Info[] = "todaysSpO2Info";
inline constexpr char kTrendString[] = "trendString";
inline constexpr char kWakeTime[] = "wakeTime";
inline constexpr char kWakeTimeLabel[] = "wakeTimeLabel";
inline constexpr char kWakingDifLabel[] = "wakingDifLabel";
inline constexpr char kWakingLabel[] = "wakingLabel";
inline constexpr char kWakingPoints[] = "wakingPoints";
inline constexpr char kWakingTint[] = "wakingTint";
inline constexpr char kWristTempAverage28Label[] = "wristTempAverage28Label";
inline constexpr char kWristTempDifLabel[] = "wristTempDifLabel";
inline constexpr char kWristTempTodayInfo[] = "wristTempTodayInfo";
inline constexpr char kWristTempTodayLabel[] = "wristTempTodayLabel";

// Added by SleepMetricsUI to the records it passes on to the snippets.
inline constexpr char kBankBalanceLabel[] = "bankBalanceLabel";
inline constexpr char kBankIndicatorColour[] = "bankIndicatorColour";
inline constexpr char kBankTimeLabel[] = "bankTimeLabel";
inline constexpr char kHrvIndicatorColour[] = "hrvIndicatorColour";
inline constexpr char kRatingColour[] = "ratingColour";
inline constexpr char kRingBPMColour[] = "ringBPMColour";
inline constexpr char kRingDeepColour[] = "ringDeepColour";
inline constexpr char kRingQualityColour[] = "ringQualityColour";
inline constexpr char kRingsImage[] = "ringsImage";
inline constexpr char kRingSleepColour[] = "ringSleepColour";
inline constexpr char kSleepGoalLabel[] = "sleepGoalLabel";
inline constexpr char kSleepIndicatorColour[] = "sleepIndicatorColour";
inline constexpr char kSleepTimeLabel[] = "sleepTimeLabel";
inline constexpr char kWakingIndicatorColour[] = "wakingIndicatorColour";

}  // namespace velmorant::metrics::keys
