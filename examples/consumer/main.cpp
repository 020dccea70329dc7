// Reads the demo night through the installed library: a duration as the app writes it, and the
// readiness widget picture written as a PNG. Prints what it made; exit 1 when something is missing.
#include "demo/DemoData.h"
#include "format/FormatTools.h"
#include "platform/graphics/Image.h"
#include "platform/services/Platform.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <iostream>

int main(int argc, char** argv) {
    using namespace velmorant;
    if (argc != 2) {
        std::cerr << "usage: velmorant-consumer OUT.png\n";
        return 2;
    }
    platform::PlatformOptions options;
    options.now = platform::Date::fromUnix(1709623800);  // 2024-03-05 07:30 UTC
    options.timeZoneId = "Europe/London";
    options.scale = 1;
    options.resourceDir = CONSUMER_RESOURCES;
    platform::Platform platform(options);
    demo::installDemoStores(platform);

    format::FormatTools formatTools(platform);
    std::cout << "7.5 hours: " << formatTools.formattedTimeInterval(27000) << '\n';

    snippet_ui::SleepMetricsUI ui(platform);
    platform::ImagePtr picture = ui.swiftReadinessImage();
    if (!picture) {
        std::cerr << "velmorant-consumer: no readiness picture\n";
        return 1;
    }
    std::string error;
    if (!picture->writePng(argv[1], &error)) {
        std::cerr << "velmorant-consumer: " << error << '\n';
        return 1;
    }
    std::cout << "readiness picture: " << picture->pixelWidth() << "x" << picture->pixelHeight() << '\n';
    return 0;
}
