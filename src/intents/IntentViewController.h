#pragma once

#include "intents/Intents.h"
#include "platform/core/Geometry.h"
#include "platform/services/Platform.h"
#include "platform/views/ViewTree.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace velmorant::format {
class FormatTools;
}  // namespace velmorant::format
namespace velmorant::snippet_ui {
class SleepMetricsUI;
}  // namespace velmorant::snippet_ui

namespace velmorant::intents {

// The extension context the host gives the snippet: how large it may be.
struct ExtensionContext {
    platform::Size hostedViewMaximumAllowedSize{390, 420};
};

enum class InteractiveBehavior { None, NextView, Launch, GenericAction };

// The parameters of the intent that the snippet shows (names only).
using ParameterSet = std::set<std::string>;
// success, the parameters shown, and the size the snippet wants.
using Completion = std::function<void(bool, const ParameterSet&, platform::Size)>;

// The extension's one view controller: shows the view group of the intent's
// kind, fills it, and reports the snippet's size through the completion.
class IntentViewController {
public:
    // Loads the snippet's views from the interface description in the
    // platform's resources; throws std::runtime_error when it is unusable.
    IntentViewController(platform::Platform& platform, ExtensionContext context);
    ~IntentViewController();
    IntentViewController(const IntentViewController&) = delete;
    IntentViewController& operator=(const IntentViewController&) = delete;

    void viewDidLoad();
    void hideAllViews();
    void configureViewForParameters(const ParameterSet& parameters, const Interaction& interaction,
                                    InteractiveBehavior behavior, const ExtensionContext* context,
                                    const Completion& completion);

    // Lights-off group: the switch moment from the shared store, or the invitation.
    void populateLightsOff();
    // Rings group, two-row panel: today's sleep and the sleep bank.
    void populateSleepBankRings();
    // Rings group, two-row panel: heart-rate variability and waking heart rate.
    void populateReadiness();
    // Rings group, two-row panel: change against the baseline, today and the baseline.
    void populateWristTemp();
    // Rings group, two-row panel: as readiness, from the sleep-fuel record.
    void populateOctane();
    // Rings group, two-row panel: blood-oxygen averages and ranges.
    void populateSleepSpO2();
    // Rings group, two-row panel: respiration-rate averages and ranges.
    void populateRespRate();
    // Rings group, two-row panel: time until bed and wake time.
    void populateLatestBedtime();
    // Rings group, four-row panel: the sleep rings' results and colours.
    void populateSleepRings();

    const platform::ViewTree& views() const { return views_; }
    ExtensionContext& extensionContext() { return extensionContext_; }

    // Outlets, connected to the views of the same name.
    platform::View* lightsOffContainer;
    platform::View* lamp;
    platform::View* lightsOffLabel;
    platform::View* statusLabel;
    platform::View* textContainer;
    platform::View* textLabel;
    platform::View* ringsContainer;
    platform::View* ringsImage;
    platform::View* starsLabel;
    platform::View* ringTextContainer;
    platform::View* sleepIndicator;
    platform::View* sleepGlyph;
    platform::View* sleepHeadingLabel;
    platform::View* sleepTimeLabel;
    platform::View* sleepGoalLabel;
    platform::View* bankIndicator;
    platform::View* bankGlyph;
    platform::View* bankHeadingLabel;
    platform::View* bankBalanceLabel;
    platform::View* bankTimeLabel;
    platform::View* ringStatsContainer;
    platform::View* sleepRingIndicator;
    platform::View* sleepRingHeadingLabel;
    platform::View* sleepRingResultLabel;
    platform::View* qualityRingIndicator;
    platform::View* qualityRingHeadingLabel;
    platform::View* qualityRingResultLabel;
    platform::View* deepRingIndicator;
    platform::View* deepRingHeadingLabel;
    platform::View* deepRingResultLabel;
    platform::View* bpmRingIndicator;
    platform::View* bpmRingHeadingLabel;
    platform::View* bpmRingResultLabel;
    // The quality glyph has two fields: the connected outlet `_qualityGlyphLabel`
    // and a separately declared `qualityGlyphLabel` that nothing ever connects.
    platform::View* _qualityGlyphLabel;
    platform::View* qualityGlyphLabel = nullptr;

    // The names of all outlets, as the interface description names the views.
    static const std::set<std::string>& outletNames();

private:
    platform::View* outlet(const char* name);
    // Collaborators, made on first use and kept for the controller's life.
    snippet_ui::SleepMetricsUI& sleepMetricsUI();
    format::FormatTools& formatTools();
    // A heading as shown: the localised text, upper-cased.
    std::string heading(std::string_view key) const;
    // The frame every two-row snippet starts with: panel, headings, stars, corner radii.
    void showTextPanel(std::string_view upperHeading, std::string_view lowerHeading);

    platform::Platform& platform_;
    ExtensionContext extensionContext_;
    platform::ViewTree views_;
    std::unique_ptr<snippet_ui::SleepMetricsUI> sleepMetricsUI_;
    std::unique_ptr<format::FormatTools> formatTools_;
    std::shared_ptr<platform::PreferencesStore> groupPrefs_;
};

}  // namespace velmorant::intents
