// The sleep snippets: lights off, sleep bank, latest bedtime, sleep rings.
#include "IntentViewController.h"

#include "RecordFields.h"
#include "format/FormatTools.h"
#include "metrics/RecordKeys.h"
#include "platform/text/StringFormat.h"
#include "platform/text/Text.h"
#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::intents {
using format::FormatTools;
using snippet_ui::SleepMetricsUI;
namespace keys = metrics::keys;

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
    if (!record.contains(keys::kSleepIndicatorColour)) return;
    setImageFrom(*ringsImage, record);
    sleepTimeLabel->setText(recordText(record, keys::kSleepTimeLabel));
    sleepGoalLabel->setText(recordText(record, keys::kSleepGoalLabel));
    bankBalanceLabel->setText(recordText(record, keys::kBankBalanceLabel));
    bankTimeLabel->setText(recordText(record, keys::kBankTimeLabel));
    sleepIndicator->setBackgroundColor(recordColour(record, keys::kSleepIndicatorColour));
    sleepGlyph->setText("\u263E");
    bankIndicator->setBackgroundColor(recordColour(record, keys::kBankIndicatorColour));
    bankGlyph->setText("7");
}

void IntentViewController::populateLatestBedtime() {
    showTextPanel("Bed time", "Wake time");
    SleepMetricsUI::Record record = sleepMetricsUI().requestLatestBedtime();
    if (record) {
        setImageFrom(*ringsImage, *record);
        sleepTimeLabel->setText(recordText(*record, keys::kTimeUntilBedLabel));
        sleepGoalLabel->setText(recordText(*record, keys::kLatestBedTime));
        sleepGlyph->setText("\U0001F6CC");
        bankTimeLabel->setText(recordText(*record, keys::kTimeUntilWakeLabel));
        bankBalanceLabel->setText(recordText(*record, keys::kWakeTimeLabel));
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
        if (record->contains(keys::kShowStages)) {
            qualityRingHeadingLabel->setText(heading("REM"));
            // Goes to the field the interface never connects, so the visible
            // glyph keeps its first-loaded star; kept that way on purpose.
            if (qualityGlyphLabel) qualityGlyphLabel->setText("R");
        }
        sleepRingResultLabel->setText(recordText(*record, keys::kRingSleepLabel));
        qualityRingResultLabel->setText(recordText(*record, keys::kRingQualityLabel));
        deepRingResultLabel->setText(recordText(*record, keys::kRingDeepLabel));
        bpmRingResultLabel->setText(recordText(*record, keys::kRingBPMLabel));
        sleepRingIndicator->setBackgroundColor(recordColour(*record, keys::kRingSleepColour));
        qualityRingIndicator->setBackgroundColor(recordColour(*record, keys::kRingQualityColour));
        deepRingIndicator->setBackgroundColor(recordColour(*record, keys::kRingDeepColour));
        bpmRingIndicator->setBackgroundColor(recordColour(*record, keys::kRingBPMColour));
        starsLabel->setText("");
    } else {
        for (platform::View* result :
             {sleepRingResultLabel, qualityRingResultLabel, deepRingResultLabel, bpmRingResultLabel})
            result->setText("");
        for (platform::View* indicator :
             {sleepRingIndicator, qualityRingIndicator, deepRingIndicator, bpmRingIndicator})
            indicator->setBackgroundColor(Colour::darkGrayColor());
    }
}

}  // namespace velmorant::intents
