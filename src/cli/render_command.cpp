// hemlark render: a PNG, SVG or PDF picture of the design, drawn as the design view draws it.
#include <QColor>
#include <QGuiApplication>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>

#include "cli/commands.h"
#include "cli/diagnostics.h"
#include "cli/outcome.h"
#include "platform/design_picture.h"
#include "platform/printout.h"

namespace {

constexpr int kDefaultSizePixels = 1000;

struct RenderOptions {
    std::string input;
    std::string output;
    // PNG only: the longer side in pixels.
    std::optional<int> sizePixels;
    // SVG and PDF only: times the real size.
    std::optional<double> scale;
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t thread = -1;
    std::optional<HMKColor> background;
    // The printouts of the application's print command, as PDF.
    bool worksheet = false;
    bool printTemplate = false;
    std::string pageSize = "A4";
    double stitchesPerMinute = HMKSewingTimeSettings().stitchesPerMinute;
};

const std::map<std::string, QPageSize::PageSizeId> kPageSizes = {
    {"A3", QPageSize::A3},         {"A4", QPageSize::A4},       {"A5", QPageSize::A5},
    {"Letter", QPageSize::Letter}, {"Legal", QPageSize::Legal}, {"Tabloid", QPageSize::Tabloid},
};

// The worksheet and the template as the print command makes them (with the print switches'
// defaults), on a page of the chosen size. Text needs a GUI application; the offscreen
// platform needs no display.
int runPrintout(const RenderOptions& options, const HMKDesign& design) {
    if (pictureFormatForPath(options.output) != HMKPictureFormat::pdf) {
        printError(toolError("--worksheet and --template write PDF files: OUT must end in .pdf."));
        return kExitUsage;
    }
    std::optional<QGuiApplication> application;
    if (!QCoreApplication::instance()) {
        // The platform's chatter (no XDG_RUNTIME_DIR, no session bus) is no news to the user.
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtCriticalMsg || type == QtFatalMsg) {
                std::fprintf(messageStream(), "hemlark: %s\n", qPrintable(text));
            }
        });
        static int argc = 3;
        static char arguments[][16] = {"hemlark", "-platform", "offscreen"};
        static char* argv[] = {arguments[0], arguments[1], arguments[2], nullptr};
        application.emplace(argc, argv);
    }
    HMKPrintOptions print;
    print.printTemplate = options.printTemplate;
    print.showJumps = options.showJumps;
    print.showStructure = options.showStructure;
    print.fastMode = !options.show3D;
    print.timing.stitchesPerMinute = options.stitchesPerMinute;
    HMKError error;
    if (!writePrintoutPdf(design, options.output, print, QPageSize(kPageSizes.at(options.pageSize)),
                          &error)) {
        printError(error);
        return kExitFailure;
    }
    return kExitSuccess;
}

int runRender(const RenderOptions& options) {
    HMKDesign design;
    HMKError error;
    if (!design.importDesignFromURL(options.input, &error)) {
        printError(error);
        return kExitFailure;
    }
    if (options.thread >= static_cast<std::int32_t>(design.numberOfThreads())) {
        printError(
            toolError("Thread index " + std::to_string(options.thread) + " is out of range (0 to " +
                      std::to_string(static_cast<int>(design.numberOfThreads()) - 1) + ")."));
        return kExitFailure;
    }
    if (options.worksheet || options.printTemplate) {
        return runPrintout(options, design);
    }
    // The pixel size means nothing to a vector picture, nor the scale to a raster one.
    const bool vector = pictureFormatForPath(options.output).value_or(HMKPictureFormat::png) !=
                        HMKPictureFormat::png;
    if (vector ? options.sizePixels.has_value() : options.scale.has_value()) {
        printError(toolError(vector
                                 ? "--size applies to PNG pictures; use --scale for SVG and PDF."
                                 : "--scale applies to SVG and PDF pictures; use --size for PNG."));
        return kExitUsage;
    }
    HMKPictureOptions picture;
    fitPictureToDesign(design, options.sizePixels.value_or(kDefaultSizePixels), picture);
    picture.vectorScale = options.scale.value_or(1);
    picture.background = options.background;
    picture.show3D = options.show3D;
    picture.showJumps = options.showJumps;
    picture.showStructure = options.showStructure;
    picture.thread = options.thread;
    if (!writeDesignPicture(design, options.output, picture, &error)) {
        printError(error);
        return kExitFailure;
    }
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addRenderCommand(CLI::App& app) {
    auto options = std::make_shared<RenderOptions>();
    CLI::App* command =
        app.add_subcommand("render", "Draw a design into a PNG, SVG or PDF picture");
    command->add_option("IN", options->input, "Design file")->required();
    command->add_option("OUT", options->output, "Picture file: .png, .svg or .pdf")->required();
    command
        ->add_option("--size", options->sizePixels,
                     "PNG: longer side of the picture in pixels (default 1000)")
        ->type_name("PX")
        ->check(
            CLI::Range(std::max(2 * HMKPictureOptions().marginPixels + 1, 1), kMaximumPictureSide));
    command
        ->add_option("--scale", options->scale,
                     "SVG, PDF: times the design's real size (default 1, real size)")
        ->type_name("FACTOR")
        ->check(CLI::Range(kMinimumVectorScale, kMaximumVectorScale));
    command->add_flag("--3d", options->show3D, "Shade the thread");
    command->add_flag("--jumps", options->showJumps, "Draw the jumps as dashed lines");
    command->add_flag("--structure", options->showStructure, "Mark every needle point");
    command->add_option("--thread", options->thread, "Draw only thread N (from 0)")
        ->type_name("N")
        ->check(CLI::Range(-1, std::numeric_limits<std::int32_t>::max()));
    command
        ->add_option_function<std::string>(
            "--background",
            [options](const std::string& text) {
                const QColor color(QString::fromStdString(text));
                if (!color.isValid()) {
                    throw CLI::ValidationError("--background",
                                               "'" + text + "' is no colour name or #rrggbb");
                }
                options->background = color.alpha() == 0
                                          ? std::nullopt
                                          : std::optional<HMKColor>(HMKColor(
                                                color.redF(), color.greenF(), color.blueF()));
            },
            "Fill the picture with a colour name or #rrggbb (default: transparent; PDF white)")
        ->type_name("COLOR");
    auto* worksheet = command->add_flag(
        "--worksheet", options->worksheet,
        "Print the worksheet into the PDF: picture, facts, sewing time and thread list");
    command
        ->add_flag("--template", options->printTemplate,
                   "Print the design at true size into the PDF, with centre cross and hoop, "
                   "over several pages when needed")
        ->excludes(worksheet);
    command->add_option("--page", options->pageSize, "Paper of --worksheet and --template (A4)")
        ->type_name("SIZE")
        ->check(CLI::IsMember({"A3", "A4", "A5", "Letter", "Legal", "Tabloid"}));
    command
        ->add_option("--speed", options->stitchesPerMinute,
                     "Machine speed for the worksheet's sewing time (default 700 stitches/min)")
        ->type_name("SPM")
        ->check(CLI::Range(1.0, 10000.0));
    command->footer(
        "Examples:\n"
        "  hemlark render samples/flower.pcs flower.png --size 1200 --3d\n"
        "  hemlark render samples/heart.dst heart.svg --jumps --structure --scale 2\n"
        "  hemlark render samples/flower.pcs petals.pdf --thread 1 --background white\n"
        "  hemlark render samples/flower.pcs worksheet.pdf --worksheet --3d\n"
        "  hemlark render samples/heart.jef template.pdf --template --page Letter");
    return [options] { return runRender(*options); };
}
