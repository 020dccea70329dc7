#include "IntentViewController.h"

#include "format/FormatTools.h"
#include "platform/text/Text.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <stdexcept>

namespace velmorant::intents {
using format::FormatTools;
using snippet_ui::SleepMetricsUI;

namespace {

constexpr double kCompactHeight = 180;
constexpr double kTallHeight = 420;

// Every outlet, by the name of the view it is connected to: the one list the constructor and
// outletNames() read.
struct Outlet {
    const char* name;
    platform::View* IntentViewController::*member;
};

constexpr Outlet kOutlets[] = {
    {"lightsOffContainer", &IntentViewController::lightsOffContainer},
    {"lamp", &IntentViewController::lamp},
    {"lightsOffLabel", &IntentViewController::lightsOffLabel},
    {"statusLabel", &IntentViewController::statusLabel},
    {"textContainer", &IntentViewController::textContainer},
    {"textLabel", &IntentViewController::textLabel},
    {"ringsContainer", &IntentViewController::ringsContainer},
    {"ringsImage", &IntentViewController::ringsImage},
    {"starsLabel", &IntentViewController::starsLabel},
    {"ringTextContainer", &IntentViewController::ringTextContainer},
    {"sleepIndicator", &IntentViewController::sleepIndicator},
    {"sleepGlyph", &IntentViewController::sleepGlyph},
    {"sleepHeadingLabel", &IntentViewController::sleepHeadingLabel},
    {"sleepTimeLabel", &IntentViewController::sleepTimeLabel},
    {"sleepGoalLabel", &IntentViewController::sleepGoalLabel},
    {"bankIndicator", &IntentViewController::bankIndicator},
    {"bankGlyph", &IntentViewController::bankGlyph},
    {"bankHeadingLabel", &IntentViewController::bankHeadingLabel},
    {"bankBalanceLabel", &IntentViewController::bankBalanceLabel},
    {"bankTimeLabel", &IntentViewController::bankTimeLabel},
    {"ringStatsContainer", &IntentViewController::ringStatsContainer},
    {"sleepRingIndicator", &IntentViewController::sleepRingIndicator},
    {"sleepRingHeadingLabel", &IntentViewController::sleepRingHeadingLabel},
    {"sleepRingResultLabel", &IntentViewController::sleepRingResultLabel},
    {"qualityRingIndicator", &IntentViewController::qualityRingIndicator},
    {"qualityRingHeadingLabel", &IntentViewController::qualityRingHeadingLabel},
    {"qualityRingResultLabel", &IntentViewController::qualityRingResultLabel},
    {"deepRingIndicator", &IntentViewController::deepRingIndicator},
    {"deepRingHeadingLabel", &IntentViewController::deepRingHeadingLabel},
    {"deepRingResultLabel", &IntentViewController::deepRingResultLabel},
    {"bpmRingIndicator", &IntentViewController::bpmRingIndicator},
    {"bpmRingHeadingLabel", &IntentViewController::bpmRingHeadingLabel},
    {"bpmRingResultLabel", &IntentViewController::bpmRingResultLabel},
    {"qualityGlyphLabel", &IntentViewController::_qualityGlyphLabel},
};

template <typename T>
bool isKind(const Interaction& interaction) {
    return dynamic_cast<const T*>(interaction.intent.get()) != nullptr;
}

}  // namespace

IntentViewController::IntentViewController(platform::Platform& platform, ExtensionContext context)
    : platform_(platform),
      extensionContext_(context),
      views_(platform::ViewTree::loadInterface(platform.resourceDir() / "interface" / "IntentViewController.json",
                                               [&platform](std::string_view name) { return platform.imageNamed(name); })) {
    for (const Outlet& entry : kOutlets) this->*entry.member = outlet(entry.name);
}

IntentViewController::~IntentViewController() = default;

const std::set<std::string>& IntentViewController::outletNames() {
    static const std::set<std::string> names = [] {
        std::set<std::string> all;
        for (const Outlet& entry : kOutlets) all.emplace(entry.name);
        return all;
    }();
    return names;
}

platform::View* IntentViewController::outlet(const char* name) {
    platform::View* view = views_.view(name);
    if (!view) throw std::runtime_error(std::string("the interface description has no view \"") + name + "\"");
    return view;
}

void IntentViewController::viewDidLoad() {}

void IntentViewController::hideAllViews() {
    lightsOffContainer->setHidden(true);
    textContainer->setHidden(true);
    ringsContainer->setHidden(true);
    ringStatsContainer->setHidden(true);
    ringTextContainer->setHidden(true);
}

void IntentViewController::configureViewForParameters(const ParameterSet& parameters, const Interaction& interaction,
                                                      InteractiveBehavior, const ExtensionContext*,
                                                      const Completion& completion) {
    hideAllViews();
    double height = kTallHeight;
    platform::Size maximum;
    // Kinds 2 to 9 share the rings group; each names its populate operation.
    auto showRings = [&](void (IntentViewController::*populate)()) {
        hideAllViews();
        ringsContainer->setHidden(false);
        maximum = extensionContext_.hostedViewMaximumAllowedSize;
        (this->*populate)();
    };
    if (isKind<LightsOffIntent>(interaction)) {
        maximum = extensionContext_.hostedViewMaximumAllowedSize;
        lightsOffContainer->setHidden(false);
        populateLightsOff();
        height = kCompactHeight;
    } else if (isKind<TimeAsleepIntent>(interaction)) {
        showRings(&IntentViewController::populateSleepBankRings);
    } else if (isKind<ReadinessIntent>(interaction)) {
        showRings(&IntentViewController::populateReadiness);
    } else if (isKind<WristTempIntent>(interaction)) {
        showRings(&IntentViewController::populateWristTemp);
    } else if (isKind<SleepFuelIntent>(interaction)) {
        showRings(&IntentViewController::populateOctane);
    } else if (isKind<SleepSpO2Intent>(interaction)) {
        showRings(&IntentViewController::populateSleepSpO2);
    } else if (isKind<RespirationIntent>(interaction)) {
        showRings(&IntentViewController::populateRespRate);
    } else if (isKind<LatestBedtimeIntent>(interaction)) {
        showRings(&IntentViewController::populateLatestBedtime);
    } else {
        bool sleepRings = isKind<SleepRingsIntent>(interaction);
        hideAllViews();
        if (sleepRings) {
            showRings(&IntentViewController::populateSleepRings);
        } else {
            textContainer->setHidden(false);
            maximum = extensionContext_.hostedViewMaximumAllowedSize;
            // Shown as it stands: this text is not looked up for translation.
            textLabel->setText("I am so confused.");
            height = kCompactHeight;
        }
    }
    if (completion) completion(true, parameters, {maximum.width, height});
}

SleepMetricsUI& IntentViewController::sleepMetricsUI() {
    if (!sleepMetricsUI_) sleepMetricsUI_ = std::make_unique<SleepMetricsUI>(platform_);
    return *sleepMetricsUI_;
}

FormatTools& IntentViewController::formatTools() {
    if (!formatTools_) formatTools_ = std::make_unique<FormatTools>(platform_);
    return *formatTools_;
}

std::string IntentViewController::heading(std::string_view key) const {
    return platform::uppercaseString(platform_.localizedString(key, "", ""));
}

void IntentViewController::showTextPanel(std::string_view upperHeading, std::string_view lowerHeading) {
    ringTextContainer->setHidden(false);
    ringTextContainer->layer().setCornerRadius(12);
    sleepHeadingLabel->setText(heading(upperHeading));
    starsLabel->setText("");
    bankHeadingLabel->setText(heading(lowerHeading));
    sleepIndicator->layer().setCornerRadius(10);
    bankIndicator->layer().setCornerRadius(10);
}

}  // namespace velmorant::intents
