// hemlark render: a PNG, SVG or PDF picture of the design, drawn as the design view draws it.
#include <QColor>
#include <QString>

#include <algorithm>
#include <cmath>
#include <memory>

#include "cli/commands.h"
#include "cli/outcome.h"
#include "platform/design_picture.h"

namespace {

struct RenderOptions {
    std::string input;
    std::string output;
    int sizePixels = 1000;
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t thread = -1;
    std::optional<HMKColor> background;
};

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
    HMKPictureOptions picture;
    fitPictureToDesign(design, options.sizePixels, picture);
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
                     "Longer side of the picture in pixels (default 1000)")
        ->type_name("PX")
        ->check(
            CLI::Range(std::max(2 * HMKPictureOptions().marginPixels + 1, 1), kMaximumPictureSide));
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
    command->footer(
        "Examples:\n"
        "  hemlark render samples/flower.pcs flower.png --size 1200 --3d\n"
        "  hemlark render samples/heart.dst heart.svg --jumps --structure\n"
        "  hemlark render samples/flower.pcs petals.pdf --thread 1 --background white");
    return [options] { return runRender(*options); };
}
