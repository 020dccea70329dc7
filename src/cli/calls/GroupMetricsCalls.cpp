#include "cli/CallRegistry.h"
#include "metrics/GroupMetrics.h"

namespace velmorant::cli {
using metrics::GroupMetrics;

namespace {

using platform::Platform;

// The record operations take no arguments and answer a record or none.
void addRecord(CallRegistry& registry, const char* selector, GroupMetrics::Record (GroupMetrics::*request)()) {
    registry.add("GroupMetrics", selector, {}, [request](Platform& p, const CallArgs&) -> CallResult {
        GroupMetrics gm(p);
        return CallResult((gm.*request)());
    });
}

}  // namespace

void registerGroupMetricsCalls(CallRegistry& registry) {
    addRecord(registry, "requestQuality", &GroupMetrics::requestQuality);
    addRecord(registry, "requestSpO2", &GroupMetrics::requestSpO2);
    addRecord(registry, "requestRespRate", &GroupMetrics::requestRespRate);
    addRecord(registry, "requestWristTemp", &GroupMetrics::requestWristTemp);
    addRecord(registry, "requestReadiness", &GroupMetrics::requestReadiness);
    addRecord(registry, "requestOctane", &GroupMetrics::requestOctane);
    addRecord(registry, "requestSleepBank", &GroupMetrics::requestSleepBank);
    addRecord(registry, "returnPreviousSleepBank", &GroupMetrics::returnPreviousSleepBank);
    addRecord(registry, "requestConsistencyDict", &GroupMetrics::requestConsistencyDict);

    registry.add("GroupMetrics", "requestQualityForSwift", {}, [](Platform& p, const CallArgs&) -> CallResult {
        GroupMetrics gm(p);
        gm.requestQualityForSwift();
        return CallResult();
    });
    registry.add("GroupMetrics", "watchDictIsValid", {}, [](Platform& p, const CallArgs&) -> CallResult {
        GroupMetrics gm(p);
        return CallResult(gm.watchDictIsValid());
    });
    // The accessors below read the store handle a request has opened; a call
    // opens it first, as any request would, so they see the real store.
    registry.add("GroupMetrics", "shouldReportPreviousDay", {}, [](Platform& p, const CallArgs&) -> CallResult {
        GroupMetrics gm(p);
        gm.watchDictIsValid();
        return CallResult(gm.shouldReportPreviousDay());
    });
    registry.add("GroupMetrics", "getVelmorantConfigValueForKey:", {ParamType::String},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     GroupMetrics gm(p);
                     gm.watchDictIsValid();
                     return CallResult(gm.getVelmorantConfigValueForKey(a.string(0).value_or("")));
                 });
    registry.add("GroupMetrics", "getVelmorantSwitchValueForKey:", {ParamType::String},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return CallResult(false);
                     GroupMetrics gm(p);
                     gm.watchDictIsValid();
                     return CallResult(gm.getVelmorantSwitchValueForKey(*a.string(0)));
                 });
    registry.add("GroupMetrics", "getFromDateForNightHour:", {ParamType::Integer},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return CallResult();
                     GroupMetrics gm(p);
                     return CallResult(gm.getFromDateForNightHour(a.integer(0)));
                 });
}

}  // namespace velmorant::cli
