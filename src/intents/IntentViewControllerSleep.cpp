// The sleep snippets: lights off, sleep bank, latest bedtime, sleep rings.
#include "IntentViewController.h"

#include "RecordFields.h"
#include "format/FormatTools.h"
#include "platform/text/StringFormat.h"
#include "platform/text/Text.h"
#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::intents {
using format::FormatTools;
using snippet_ui::SleepMetricsUI;

namespace {

using detail::recordColour;
using detail::recordText;
using detail::setImageFrom;
using platform::Colour;

}  // namespace

void IntentViewController::populateLightsOff() {
    FormatTools& tools = formatTools();
    groupPrefs_ = platform_.suiteNamed(platform::kAppGroupSuite);
    std::optional<platform::Date> switchedOff = groupPrefs_->objectForKey("activeLightSwitch").date();
    if (switchedOff) {
        lamp->setImage(platform_.imageNamed("LightsOff"));
        lightsOffLabel->setText(platform::stringWithFormat(
            "%@ %@.", {platform_.localizedString("\U0001F4A4 In bed at"), tools.dayTime(*switchedOff)}));
        statusLabel->setText(heading("Good Night"));
    } else {
        lamp->setImage(platform_.imageNamed("LightsOn"));
        lightsOffLabel->setText(platform_.localizedString("Optionally use lights off to start sleeping."));
        statusLabel->setText(heading("Confirm"));
    }
}

void IntentViewController::populateSleepBankRings() {
    showTextPanel("Today", "Sleep Bank");
    platform::Dictionary record = sleepMetricsUI().requestSleepBankRings();
    // Without tonight's figures the panel keeps whatever it showed before: this
    // snippet deliberately has no empty state of its own.
    if (!record.contains("sleepIndicatorColour")) return;
    setImageFrom(*ringsImage, record);
    sleepTimeLabel->setText(recordText(record, "sleepTimeLabel"));
    sleepGoalLabel->setText(recordText(record, "sleepGoalLabel"));
    bankBalanceLabel->setText(recordText(record, "bankBalanceLabel"));
    bankTimeLabel->setText(recordText(record, "bankTimeLabel"));
    sleepIndicator->setBackgroundColor(recordColour(record, "sleepIndicatorColour"));
    sleepGlyph->setText("\u263E");
    bankIndicator->setBackgroundColor(recordColour(record, "bankIndicatorColour"));
    bankGlyph->setText("7");
}

void IntentViewController::populateLatestBedtime() {
    showTextPanel("Bed time", "Wake time");
    SleepMetricsUI::Record record = sleepMetricsUI().requestLatestBedtime();
    if (record) {
        setImageFrom(*ringsImage, *record);
        sleepTimeLabel->setText(recordText(*record, "timeUntilBedLabel"));
        sleepGoalLabel->setText(recordText(*record, "latestBedTime"));
        sleepGlyph->setText("\U0001F6CC");
        bankTimeLabel->setText(recordText(*record, "timeUntilWakeLabel"));
        bankBalanceLabel->setText(recordText(*record, "wakeTimeLabel"));
        sleepIndicator->setBackgroundColor(Colour::clearColor());
        bankIndicator->setBackgroundColor(Colour::clearColor());
        bankGlyph->setText("\U0001F6CF");
        starsLabel->setText("");
    } else {
        // The empty state borrows the readiness glyphs, as it always has.
        sleepTimeLabel->setText("");
        sleepGoalLabel->setText("");
        bankTimeLabel->setText("");
        bankBalanceLabel->setText("");
        sleepGlyph->setText("h");
        bankGlyph->setText("\u2665");
        sleepIndicator->setBackgroundColor(Colour::darkGrayColor());
        bankIndicator->setBackgroundColor(Colour::darkGrayColor());
    }
}

void IntentViewController::populateSleepRings() {
    ringStatsContainer->setHidden(false);
    ringStatsContainer->layer().setCornerRadius(12);
    sleepRingHeadingLabel->setText(heading("Sleep"));
    qualityRingHeadingLabel->setText(heading("Quality"));
    deepRingHeadingLabel->setText(heading("Deep"));
    bpmRingHeadingLabel->setText(heading("bpm"));
    for (platform::View* indicator : {sleepRingIndicator, qualityRingIndicator, deepRingIndicator, bpmRingIndicator})
        indicator->layer().setCornerRadius(10);

    SleepMetricsUI::Record record = sleepMetricsUI().requestQuality();
    if (record) {
        setImageFrom(*ringsImage, *record);
        if (record->contains("showStages")) {
            qualityRingHeadingLabel->setText(heading("REM"));
            // Goes to the field the interface never connects, so the visible
            // glyph keeps its first-loaded star; kept that way on purpose.
            if (qualityGlyphLabel) qualityGlyphLabel->setText("R");
        }
        sleepRingResultLabel->setText(recordText(*record, "ringSleepLabel"));
        qualityRingResultLabel->setText(recordText(*record, "ringQualityLabel"));
        deepRingResultLabel->setText(recordText(*record, "ringDeepLabel"));
        bpmRingResultLabel->setText(recordText(*record, "ringBPMLabel"));
        sleepRingIndicator->setBackgroundColor(recordColour(*record, "ringSleepColour"));
        qualityRingIndicator->setBackgroundColor(recordColour(*record, "ringQualityColour"));
        deepRingIndicator->setBackgroundColor(recordColour(*record, "ringDeepColour"));
        bpmRingIndicator->setBackgroundColor(recordColour(*record, "ringBPMColour"));
        starsLabel->setText("");
    } else {
        for (platform::View* result : {sleepRingResultLabel, qualityRingResultLabel, deepRingResultLabel, bpmRingResultLabel})
            result->setText("");
        for (platform::View* indicator : {sleepRingIndicator, qualityRingIndicator, deepRingIndicator, bpmRingIndicator})
            indicator->setBackgroundColor(Colour::darkGrayColor());
    }
}

}  // namespace velmorant::intents
