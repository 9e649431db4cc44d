#include "cli/edits.h"

#include <charconv>
#include <cmath>

#include "cli/outcome.h"

namespace {

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (true) {
        std::size_t comma = text.find(',', start);
        parts.push_back(text.substr(start, comma - start));
        if (comma == std::string::npos) {
            return parts;
        }
        start = comma + 1;
    }
}

template <typename Number>
Number parseNumber(const std::string& option, const std::string& text) {
    Number value{};
    const char* end = text.data() + text.size();
    auto [stop, problem] = std::from_chars(text.data(), end, value);
    if (text.empty() || problem != std::errc() || stop != end) {
        throw CLI::ValidationError(option, "'" + text + "' is not a number");
    }
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(value)) {
            throw CLI::ValidationError(option, "'" + text + "' is not a finite number");
        }
    }
    return value;
}

// Exactly count comma-separated numbers ("X,Y").
template <typename Number>
std::vector<Number> parseNumbers(const std::string& option, const std::string& text,
                                 std::size_t count) {
    std::vector<std::string> parts = splitAtCommas(text);
    if (parts.size() != count) {
        throw CLI::ValidationError(option, "expects " + std::to_string(count) +
                                               " comma-separated numbers, got '" + text + "'");
    }
    std::vector<Number> numbers;
    for (const std::string& part : parts) {
        numbers.push_back(parseNumber<Number>(option, part));
    }
    return numbers;
}

class EditOptions {
public:
    EditOptions(CLI::App& command, HMKEditList& edits) : command_(command), edits_(edits) {}

    // An option without a value. The callbacks outlive this helper, so they hold the list.
    void flag(const std::string& name, const std::string& help,
              std::function<bool(HMKDesign&, HMKError*)> apply) {
        command_
            .add_flag_function(
                name,
                [edits = &edits_, name, apply](std::int64_t) {
                    edits->push_back({name, apply});
                },
                help)
            ->trigger_on_parse()
            ->group("Edits (applied in the order given)");
    }

    // An option with one value; make turns the text into the edit (or throws a usage error).
    void valued(
        const std::string& name, const std::string& valueName, const std::string& help,
        std::function<std::function<bool(HMKDesign&, HMKError*)>(const std::string&)> make) {
        command_
            .add_option_function<std::string>(
                name,
                [edits = &edits_, name, make](const std::string& value) {
                    edits->push_back({name + " " + value, make(value)});
                },
                help)
            ->type_name(valueName)
            ->trigger_on_parse()
            ->group("Edits (applied in the order given)");
    }

private:
    CLI::App& command_;
    HMKEditList& edits_;
};

HMKRect parseRect(const std::string& option, const std::string& text) {
    auto n = parseNumbers<double>(option, text, 4);
    return {n[0], n[1], n[2], n[3]};
}

HMKPoint parsePoint(const std::string& option, const std::string& text) {
    auto n = parseNumbers<double>(option, text, 2);
    return {n[0], n[1]};
}

bool recolor(HMKDesign& design, std::int32_t index, const HMKColor& color,
             const std::string& palette, HMKError* error) {
    if (index < 0 || static_cast<std::size_t>(index) >= design.numberOfThreads()) {
        if (error) {
            const std::size_t count = design.numberOfThreads();
            *error = toolError("Thread index " + std::to_string(index) + " is out of range " +
                               (count == 0 ? std::string("(the design has no threads).")
                                           : "(0 to " + std::to_string(count - 1) + ")."));
        }
        return false;
    }
    if (!design.changeThread(index, color, palette)) {
        return fail(error, 140, "color palette not found");
    }
    return true;
}

void addSelectionOptions(EditOptions& options) {
    options.flag("--select-all", "Select every stitch (selectAll)", [](HMKDesign& d, HMKError*) {
        d.selectAll();
        return true;
    });
    options.flag("--deselect-all", "Deselect every stitch (deselectAll)",
                 [](HMKDesign& d, HMKError*) {
                     d.deselectAll();
                     return true;
                 });
    options.flag("--invert-selection", "Invert the selection (invertAll)",
                 [](HMKDesign& d, HMKError*) {
                     d.invertAll();
                     return true;
                 });
    options.valued("--select-rect", "X,Y,W,H",
                   "Add the stitches inside a rectangle (0.1 mm units) to the selection",
                   [](const std::string& text) {
                       HMKRect rect = parseRect("--select-rect", text);
                       return [rect](HMKDesign& d, HMKError*) {
                           d.selectInRect(rect, false);
                           return true;
                       };
                   });
    options.valued("--unselect-rect", "X,Y,W,H",
                   "Remove the stitches inside a rectangle (0.1 mm units) from the selection",
                   [](const std::string& text) {
                       HMKRect rect = parseRect("--unselect-rect", text);
                       return [rect](HMKDesign& d, HMKError*) {
                           d.selectInRect(rect, true);
                           return true;
                       };
                   });
    options.valued("--select-stitch", "X,Y", "Select the stitch at a point (0.1 mm units)",
                   [](const std::string& text) {
                       HMKPoint point = parsePoint("--select-stitch", text);
                       return [point](HMKDesign& d, HMKError*) {
                           d.selectStitchAt(point, kHitTolerance, false);
                           return true;
                       };
                   });
    options.valued("--select-block", "X,Y",
                   "Select the run of stitches through a point (0.1 mm units)",
                   [](const std::string& text) {
                       HMKPoint point = parsePoint("--select-block", text);
                       return [point](HMKDesign& d, HMKError*) {
                           d.selectBlockAt(point, kHitTolerance, false);
                           return true;
                       };
                   });
}

void addTransformOptions(EditOptions& options) {
    options.valued("--move", "DX,DY", "Move the selection (0.1 mm units)",
                   [](const std::string& text) {
                       HMKPoint vector = parsePoint("--move", text);
                       return [vector](HMKDesign& d, HMKError* error) {
                           return d.moveSelectionByVector(vector, error);
                       };
                   });
    options.valued("--resize", "FACTOR", "Scale the selection about its centre (1.0 keeps it)",
                   [](const std::string& text) {
                       float factor = parseNumber<float>("--resize", text);
                       // The closing jump divides by the factor.
                       if (factor == 0) {
                           throw CLI::ValidationError("--resize", "the factor must not be 0");
                       }
                       return [factor](HMKDesign& d, HMKError* error) {
                           return d.resizeSelectionByPercent(factor, error);
                       };
                   });
    options.valued("--rotate", "DEGREES", "Rotate the selection by whole degrees",
                   [](const std::string& text) {
                       std::int32_t degrees = parseNumber<std::int32_t>("--rotate", text);
                       return [degrees](HMKDesign& d, HMKError* error) {
                           return d.rotateSelectionByDegrees(degrees, error);
                       };
                   });
    options.valued("--flip", "V|H", "Mirror the selection: V vertically, H horizontally",
                   [](const std::string& orientation) {
                       return [orientation](HMKDesign& d, HMKError* error) {
                           return d.flipSelection(orientation, error);
                       };
                   });
    options.flag("--center", "Centre the design on the hoop's centre (centerDesign)",
                 [](HMKDesign& d, HMKError*) { return d.centerDesign(); });
}

void addStitchOptions(EditOptions& options) {
    options.flag("--delete", "Delete the selected stitches",
                 [](HMKDesign& d, HMKError* error) { return d.deleteSelection(error); });
    options.flag(
        "--to-jumps", "Turn the selected stitches into jumps",
        [](HMKDesign& d, HMKError* error) { return d.switchSelectionToJumps(true, error); });
    options.flag(
        "--to-stitches", "Turn the selected jumps into stitches",
        [](HMKDesign& d, HMKError* error) { return d.switchSelectionToJumps(false, error); });
    options.valued("--basting", "LENGTH_MM,DISTANCE_MM",
                   "Add a basting outline, sewn first, at a distance around the design",
                   [](const std::string& text) {
                       auto n = parseNumbers<float>("--basting", text, 2);
                       // The outline is divided into stitches of this length.
                       if (n[0] <= 0) {
                           throw CLI::ValidationError("--basting", "the length must be positive");
                       }
                       return [length = n[0], distance = n[1]](HMKDesign& d, HMKError* error) {
                           return d.addBastingWithLength(length, distance, error);
                       };
                   });
    options.valued("--optimize", "TAG", "Normalise the jumps for a format tag (optimizeJumpsFor)",
                   [](const std::string& tag) {
                       return [tag](HMKDesign& d, HMKError* error) {
                           if (!d.optimizeJumpsFor(tag)) {
                               if (error) {
                                   *error =
                                       toolError("Normalising the jumps for " + tag + " failed.");
                               }
                               return false;
                           }
                           return true;
                       };
                   });
}

void addThreadOptions(EditOptions& options) {
    options.flag(
        "--insert-thread", "Start a new thread at the first selected stitch",
        [](HMKDesign& d, HMKError* error) { return d.insertThreadBeforeSelection(error); });
    options.valued("--delete-thread", "INDEX", "Merge a thread into the one before it",
                   [](const std::string& text) {
                       std::int32_t index = parseNumber<std::int32_t>("--delete-thread", text);
                       return [index](HMKDesign& d, HMKError* error) {
                           return d.deleteThreadAtIndex(index, error);
                       };
                   });
    options.valued("--move-thread", "FROM,TO", "Move a thread to another place in the order",
                   [](const std::string& text) {
                       auto n = parseNumbers<std::int32_t>("--move-thread", text, 2);
                       return [from = n[0], to = n[1]](HMKDesign& d, HMKError* error) {
                           return d.moveThreadFromIndex(from, to, error);
                       };
                   });
    options.valued("--append", "FILE", "Append another design file (pasted 1 mm apart)",
                   [](const std::string& file) {
                       return [file](HMKDesign& d, HMKError* error) {
                           HMKDesign other;
                           return other.importDesignFromURL(file, error) &&
                                  d.appendDesign(other, error);
                       };
                   });
    options.valued(
        "--palette", "NAME",
        "Change every thread to its nearest colour in a palette (\"\" for individual "
        "colours)",
        [](const std::string& palette) {
            return [palette](HMKDesign& d, HMKError* error) {
                for (std::size_t i = 0; i < d.numberOfThreads(); ++i) {
                    const HMKColor color = d.threads()[i].color;
                    if (!recolor(d, static_cast<std::int32_t>(i), color, palette, error)) {
                        return false;
                    }
                }
                return true;
            };
        });
    options.valued(
        "--recolor", "INDEX,R,G,B[,PALETTE]",
        "Change one thread to a colour (0-255), matched in a palette if given",
        [](const std::string& text) {
            std::vector<std::string> parts = splitAtCommas(text);
            if (parts.size() != 4 && parts.size() != 5) {
                throw CLI::ValidationError("--recolor",
                                           "expects INDEX,R,G,B[,PALETTE], got '" + text + "'");
            }
            auto index = parseNumber<std::int32_t>("--recolor", parts[0]);
            double components[3];
            for (int c = 0; c < 3; ++c) {
                components[c] = parseNumber<double>("--recolor", parts[c + 1]);
                if (components[c] < 0 || components[c] > 255) {
                    throw CLI::ValidationError("--recolor", "colour components run from 0 to 255");
                }
            }
            HMKColor color(components[0] / 255, components[1] / 255, components[2] / 255);
            std::string palette = parts.size() == 5 ? parts[4] : "";
            return [index, color, palette](HMKDesign& d, HMKError* error) {
                return recolor(d, index, color, palette, error);
            };
        });
    options.valued(
        "--hoop", "VENDOR,CODE", "Select the vendor's hoop with that code (-1 removes the hoop)",
        [](const std::string& text) {
            std::size_t comma = text.rfind(',');
            if (comma == std::string::npos) {
                throw CLI::ValidationError("--hoop", "expects VENDOR,CODE, got '" + text + "'");
            }
            std::string vendor = text.substr(0, comma);
            auto code = parseNumber<std::int32_t>("--hoop", text.substr(comma + 1));
            return [vendor, code](HMKDesign& d, HMKError* error) {
                // Code -1 clears the hoop and reports no match, as asked.
                if (!d.setHoopFromVendor(vendor, code) && code != -1) {
                    if (error) {
                        *error = toolError("No " + vendor + " hoop has the code " +
                                           std::to_string(code) + ".");
                    }
                    return false;
                }
                return true;
            };
        });
}

}  // namespace

void addEditOptions(CLI::App& command, HMKEditList& edits) {
    EditOptions options(command, edits);
    addSelectionOptions(options);
    addTransformOptions(options);
    addStitchOptions(options);
    addThreadOptions(options);
}

bool applyEdits(HMKDesign& design, const HMKEditList& edits, HMKError* error) {
    for (const HMKEdit& edit : edits) {
        if (!edit.apply(design, error)) {
            return false;
        }
    }
    return true;
}
