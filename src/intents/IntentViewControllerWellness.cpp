// The wellness snippets: readiness, sleep fuel, wrist temperature, blood oxygen, respiration.
#include "IntentViewController.h"

#include "RecordFields.h"
#include "metrics/RecordKeys.h"
#include "platform/text/StringFormat.h"
#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::intents {
using snippet_ui::SleepMetricsUI;
namespace keys = metrics::keys;

namespace {

using detail::recordColour;
using detail::recordText;
using detail::setImageFrom;
using platform::Colour;
using Record = SleepMetricsUI::Record;

// Readiness and sleep fuel share one panel; only the request and lower heading differ.
void fillReadinessPanel(IntentViewController& c, const Record& record) {
    if (record && record->contains(keys::kHrvIndicatorColour)) {
        setImageFrom(*c.ringsImage, *record);
        c.sleepTimeLabel->setText(recordText(*record, keys::kHrvLabel));
        c.sleepGoalLabel->setText(recordText(*record, keys::kHrvDifLabel));
        c.sleepGlyph->setText("h");
        c.bankTimeLabel->setText(recordText(*record, keys::kWakingLabel));
        c.bankBalanceLabel->setText(recordText(*record, keys::kWakingDifLabel));
        c.sleepIndicator->setBackgroundColor(recordColour(*record, keys::kHrvIndicatorColour));
        c.bankIndicator->setBackgroundColor(recordColour(*record, keys::kWakingIndicatorColour));
        c.bankGlyph->setText("\u2665");
        c.starsLabel->setText("");
    } else {
        c.sleepTimeLabel->setText("");
        c.sleepGoalLabel->setText("");
        c.sleepGlyph->setText("h");
        c.bankTimeLabel->setText("");
        c.bankBalanceLabel->setText("");
        c.sleepIndicator->setBackgroundColor(Colour::darkGrayColor());
        c.bankIndicator->setBackgroundColor(Colour::darkGrayColor());
        c.bankGlyph->setText("\u2665");
    }
}

// The record keys of one vital measure's two rows.
struct VitalKeys {
    const char* average;  // also the presence key
    const char* average7;
    const char* minimum;
    const char* maximum;
    const char* range7;
    const char* glyph;
};

constexpr VitalKeys kSpO2Keys{keys::kAverageSpO2Label, keys::kAverageSpO2Label7,      keys::kMinSpO2Label,
                              keys::kMaxSpO2Label,     keys::kAverageSpO2RangeLabel7, "O\u2082"};
constexpr VitalKeys kRespRateKeys{keys::kAverageRespRateLabel, keys::kAverageRespRateLabel7, keys::kMinRespRateLabel,
                                  keys::kMaxRespRateLabel, keys::kAverageRespRateRangeLabel7, "R\u1D63"};

// The vitals' fixed row colours: a near-white warm grey above, a dark cyan below.
Colour vitalUpperColour() { return Colour::colorWithHue(0.1527777777777778, 0.05, 0.85, 1.0); }
Colour vitalLowerColour() { return Colour::colorWithHue(0.5361111111111111, 0.92, 0.5, 1.0); }

void fillVitalPanel(IntentViewController& c, const Record& record, const VitalKeys& keys) {
    if (record && record->contains(keys.average)) {
        setImageFrom(*c.ringsImage, *record);
        c.sleepTimeLabel->setText(recordText(*record, keys.average));
        c.sleepGoalLabel->setText(recordText(*record, keys.average7));
        c.sleepGlyph->setText(keys.glyph);
        c.sleepGlyph->setFont(platform::Font::systemFontOfSize(13, platform::FontWeight::Regular));
        // A missing side shows as no data rather than as a missing object.
        c.bankTimeLabel->setText(platform::stringWithFormat(
            "%@ - %@",
            {recordText(*record, keys.minimum).value_or("--"), recordText(*record, keys.maximum).value_or("--")}));
        c.bankBalanceLabel->setText(recordText(*record, keys.range7));
        c.bankGlyph->setText("");
        c.sleepIndicator->setBackgroundColor(vitalUpperColour());
        c.bankIndicator->setBackgroundColor(vitalLowerColour());
        c.starsLabel->setText("");
    } else {
        // The glyph keeps the font it had: only data sets the small font.
        c.sleepTimeLabel->setText("");
        c.sleepGoalLabel->setText("");
        c.sleepGlyph->setText(keys.glyph);
        c.bankTimeLabel->setText("");
        c.bankBalanceLabel->setText("");
        c.bankGlyph->setText("\u2B64");
        c.sleepIndicator->setBackgroundColor(Colour::darkGrayColor());
        c.bankIndicator->setBackgroundColor(Colour::darkGrayColor());
    }
}

}  // namespace

void IntentViewController::populateReadiness() {
    showTextPanel("HRV", "Waking");
    fillReadinessPanel(*this, sleepMetricsUI().requestReadiness());
}

void IntentViewController::populateOctane() {
    showTextPanel("HRV", "bpm");
    fillReadinessPanel(*this, sleepMetricsUI().requestOctane());
}

void IntentViewController::populateWristTemp() {
    showTextPanel("Temperature", "Baseline");
    Record record = sleepMetricsUI().requestWristTemp();
    // The lower row shows only the baseline: no indicator colour, no glyph, with or without data.
    if (record && record->contains(keys::kWristTempTodayLabel)) {
        setImageFrom(*ringsImage, *record);
        sleepTimeLabel->setText(recordText(*record, keys::kWristTempDifLabel));
        sleepGoalLabel->setText(recordText(*record, keys::kWristTempTodayLabel));
        sleepGlyph->setText("\u00B0");
        bankTimeLabel->setText("");
        bankBalanceLabel->setText(recordText(*record, keys::kWristTempAverage28Label));
        sleepIndicator->setBackgroundColor(recordColour(*record, keys::kRatingColour));
        bankIndicator->setBackgroundColor(Colour::clearColor());
        bankGlyph->setText("");
        starsLabel->setText("");
    } else {
        sleepTimeLabel->setText("");
        sleepGoalLabel->setText("");
        sleepGlyph->setText("\u00B0");
        bankTimeLabel->setText("");
        bankBalanceLabel->setText("");
        sleepIndicator->setBackgroundColor(Colour::darkGrayColor());
        bankIndicator->setBackgroundColor(Colour::clearColor());
        bankGlyph->setText("");
    }
}

void IntentViewController::populateSleepSpO2() {
    showTextPanel("Avg.", "Range");
    fillVitalPanel(*this, sleepMetricsUI().requestSpO2(), kSpO2Keys);
}

void IntentViewController::populateRespRate() {
    showTextPanel("Avg.", "Range");
    fillVitalPanel(*this, sleepMetricsUI().requestRespRate(), kRespRateKeys);
}

}  // namespace velmorant::intents
