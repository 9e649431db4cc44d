#include "cli/edits.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>

#include "cli/diagnostics.h"
#include "cli/input_files.h"
#include "cli/output_formats.h"
#include "cli/palette_names.h"

namespace {

constexpr const char* kEditGroup = "Edits (applied in the order given)";
// Marks the edits that work on the selection, and so do nothing without one.
constexpr bool kNeedsSelection = true;

// Where appendDesign puts the appended design's origin: 1 mm right of and 1 mm below this
// design's origin (0.1 mm units).
constexpr HMKPoint kPastedOrigin{10, -10};

using HMKApply = std::function<bool(HMKDesign&, HMKError*)>;

HMKEdit edit(HMKApply apply) {
    HMKEdit result;
    result.apply = std::move(apply);
    return result;
}

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
        throw CLI::ValidationError(
            option,
            "'" + text + "' is not a" + (std::is_integral_v<Number> ? " whole" : "") + " number");
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

HMKRect parseRect(const std::string& option, const std::string& text) {
    auto n = parseNumbers<double>(option, text, 4);
    return {n[0], n[1], n[2], n[3]};
}

HMKPoint parsePoint(const std::string& option, const std::string& text) {
    auto n = parseNumbers<double>(option, text, 2);
    return {n[0], n[1]};
}

// "" stays "" (individual colours); any other name must be an installed palette, in any case.
std::string parsePalette(const std::string& option, const std::string& name) {
    if (name.empty()) {
        return name;
    }
    if (auto installed = installedPaletteNamed(name)) {
        return *installed;
    }
    throw CLI::ValidationError(option, unknownPaletteMessage(name));
}

class EditOptions {
public:
    EditOptions(CLI::App& command, HMKEditList& edits) : command_(command), edits_(edits) {}

    // An option without a value. The callbacks outlive this helper, so they hold the list.
    void flag(const std::string& name, const std::string& help, HMKApply apply,
              bool needsSelection = false) {
        command_
            .add_flag_function(
                name,
                [edits = &edits_, name, apply, needsSelection](std::int64_t) {
                    HMKEdit added = edit(apply);
                    added.option = name;
                    added.needsSelection = needsSelection;
                    edits->push_back(std::move(added));
                },
                help)
            ->trigger_on_parse()
            ->group(kEditGroup);
    }

    // An option with one value; make turns the text into the edit (or throws a usage error).
    void valued(const std::string& name, const std::string& valueName, const std::string& help,
                std::function<HMKEdit(const std::string&)> make, bool needsSelection = false) {
        command_
            .add_option_function<std::string>(
                name,
                [edits = &edits_, name, make, needsSelection](const std::string& value) {
                    HMKEdit added = make(value);
                    added.option = name + " " + value;
                    added.needsSelection = needsSelection;
                    edits->push_back(std::move(added));
                },
                help)
            ->type_name(valueName)
            ->trigger_on_parse()
            ->group(kEditGroup);
    }

    // An option that changes the edit before it, which must be one of the named options.
    void modifier(const std::string& name, const std::string& valueName, const std::string& help,
                  const std::string& modified,
                  std::function<void(HMKEdit&, const std::string&)> modify) {
        command_
            .add_option_function<std::string>(
                name,
                [edits = &edits_, name, modified, modify](const std::string& value) {
                    if (edits->empty() || !edits->back().option.starts_with(modified + " ") ||
                        edits->back().option.find(" " + name + " ") != std::string::npos) {
                        throw CLI::ValidationError(name, "must follow " + modified);
                    }
                    modify(edits->back(), value);
                    edits->back().option += " " + name + " " + value;
                },
                help)
            ->type_name(valueName)
            ->trigger_on_parse()
            ->group(kEditGroup);
    }

private:
    CLI::App& command_;
    HMKEditList& edits_;
};

bool recolor(HMKDesign& design, const std::string& option, std::int32_t index,
             const HMKColor& color, const std::string& palette, HMKError* error) {
    if (!checkThreadIndex(design, option, index, error)) {
        return false;
    }
    if (!design.changeThread(index, color, palette)) {
        return fail(error, 140, "color palette not found");
    }
    return true;
}

// Reads file and appends it; with an origin, the appended design's origin lands there instead
// of where the paste rule puts it.
HMKApply appended(const std::filesystem::path& file, std::optional<HMKPoint> origin) {
    return [file, origin](HMKDesign& design, HMKError* error) {
        HMKDesign other;
        HMKWarnings readingWarnings;
        if (!readDesignFile(file, other, readingWarnings, error)) {
            return false;
        }
        if (origin) {
            other.selectAll();
            other.moveSelectionByVector({origin->x - kPastedOrigin.x, origin->y - kPastedOrigin.y});
            other.deselectAll();
        }
        return design.appendDesign(other, error);
    };
}

void addSelectionOptions(EditOptions& options) {
    options.flag("--select-all", "Select every stitch", [](HMKDesign& design, HMKError*) {
        design.selectAll();
        return true;
    });
    options.flag("--deselect-all", "Deselect every stitch", [](HMKDesign& design, HMKError*) {
        design.deselectAll();
        return true;
    });
    options.flag("--invert-selection", "Invert the selection", [](HMKDesign& design, HMKError*) {
        design.invertAll();
        return true;
    });
    options.valued("--select-rect", "X,Y,W,H",
                   "Add the stitches inside a rectangle (0.1 mm units) to the selection",
                   [](const std::string& text) {
                       HMKRect rect = parseRect("--select-rect", text);
                       return edit([rect](HMKDesign& design, HMKError*) {
                           design.selectInRect(rect, false);
                           return true;
                       });
                   });
    options.valued("--unselect-rect", "X,Y,W,H",
                   "Remove the stitches inside a rectangle (0.1 mm units) from the selection",
                   [](const std::string& text) {
                       HMKRect rect = parseRect("--unselect-rect", text);
                       return edit([rect](HMKDesign& design, HMKError*) {
                           design.selectInRect(rect, true);
                           return true;
                       });
                   });
    options.valued("--select-stitch", "X,Y", "Select the stitch at a point (0.1 mm units)",
                   [](const std::string& text) {
                       HMKPoint point = parsePoint("--select-stitch", text);
                       return edit([point](HMKDesign& design, HMKError*) {
                           design.selectStitchAt(point, kHitTolerance, false);
                           return true;
                       });
                   });
    options.valued("--select-block", "X,Y",
                   "Select the run of stitches through a point (0.1 mm units)",
                   [](const std::string& text) {
                       HMKPoint point = parsePoint("--select-block", text);
                       return edit([point](HMKDesign& design, HMKError*) {
                           design.selectBlockAt(point, kHitTolerance, false);
                           return true;
                       });
                   });
}

void addTransformOptions(EditOptions& options) {
    options.valued(
        "--move", "DX,DY", "Move the selection (0.1 mm units)",
        [](const std::string& text) {
            HMKPoint vector = parsePoint("--move", text);
            return edit([vector](HMKDesign& design, HMKError* error) {
                return design.moveSelectionByVector(vector, error);
            });
        },
        kNeedsSelection);
    options.valued(
        "--resize", "FACTOR", "Scale the selection about its centre (1.0 keeps it)",
        [](const std::string& text) {
            float factor = parseNumber<float>("--resize", text);
            // The closing jump divides by the factor.
            if (factor == 0) {
                throw CLI::ValidationError("--resize", "the factor must not be 0");
            }
            return edit([factor](HMKDesign& design, HMKError* error) {
                return design.resizeSelectionByPercent(factor, error);
            });
        },
        kNeedsSelection);
    options.valued(
        "--rotate", "DEGREES", "Rotate the selection by whole degrees",
        [](const std::string& text) {
            std::int32_t degrees = parseNumber<std::int32_t>("--rotate", text);
            return edit([degrees](HMKDesign& design, HMKError* error) {
                return design.rotateSelectionByDegrees(degrees, error);
            });
        },
        kNeedsSelection);
    options.valued(
        "--flip", "V|H", "Mirror the selection: V vertically, H horizontally (either case)",
        [](const std::string& text) {
            std::string orientation = text;
            std::transform(orientation.begin(), orientation.end(), orientation.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            if (orientation != "V" && orientation != "H") {
                throw CLI::ValidationError("--flip", "expects V or H, got '" + text + "'");
            }
            return edit([orientation](HMKDesign& design, HMKError* error) {
                return design.flipSelection(orientation, error);
            });
        },
        kNeedsSelection);
    options.flag("--center", "Centre the design on the hoop's centre",
                 [](HMKDesign& design, HMKError*) { return design.centerDesign(); });
}

void addStitchOptions(EditOptions& options) {
    options.flag(
        "--delete", "Delete the selected stitches",
        [](HMKDesign& design, HMKError* error) { return design.deleteSelection(error); },
        kNeedsSelection);
    options.flag(
        "--to-jumps", "Turn the selected stitches into jumps",
        [](HMKDesign& design, HMKError* error) {
            return design.switchSelectionToJumps(true, error);
        },
        kNeedsSelection);
    options.flag(
        "--to-stitches", "Turn the selected jumps into stitches",
        [](HMKDesign& design, HMKError* error) {
            return design.switchSelectionToJumps(false, error);
        },
        kNeedsSelection);
    options.valued(
        "--basting", "LENGTH_MM,DISTANCE_MM",
        "Add a basting outline, sewn first, at a distance around the design",
        [](const std::string& text) {
            auto n = parseNumbers<float>("--basting", text, 2);
            // The outline is divided into stitches of this length.
            if (n[0] <= 0) {
                throw CLI::ValidationError("--basting", "the length must be positive");
            }
            return edit([length = n[0], distance = n[1]](HMKDesign& design, HMKError* error) {
                return design.addBastingWithLength(length, distance, error);
            });
        });
    options.valued(
        "--optimize", "TAG",
        "Normalise the jumps for a format: DST, PES, PEC, JEF, EXP or PCS (any case)",
        [](const std::string& text) {
            const std::string tag = formatTagNamed(text);
            if (tag.empty()) {
                throw CLI::ValidationError("--optimize", "'" + text +
                                                             "' is no format; expects DST, PES, "
                                                             "PEC, JEF, EXP or PCS");
            }
            return edit([tag](HMKDesign& design, HMKError* error) {
                if (!design.optimizeJumpsFor(tag)) {
                    if (error) {
                        *error = toolError("Normalising the jumps for " + tag + " failed.");
                    }
                    return false;
                }
                return true;
            });
        });
}

void addThreadOptions(EditOptions& options) {
    options.flag(
        "--insert-thread", "Start a new thread at the first selected stitch",
        [](HMKDesign& design, HMKError* error) {
            return design.insertThreadBeforeSelection(error);
        },
        kNeedsSelection);
    options.valued("--delete-thread", "INDEX", "Merge a thread into the one before it",
                   [](const std::string& text) {
                       std::int32_t index = parseNumber<std::int32_t>("--delete-thread", text);
                       return edit([index, option = "--delete-thread " + text](HMKDesign& design,
                                                                               HMKError* error) {
                           return checkThreadIndex(design, option, index, error) &&
                                  design.deleteThreadAtIndex(index, error);
                       });
                   });
    options.valued("--move-thread", "FROM,TO", "Move a thread to another place in the order",
                   [](const std::string& text) {
                       auto n = parseNumbers<std::int32_t>("--move-thread", text, 2);
                       return edit([from = n[0], to = n[1], option = "--move-thread " + text](
                                       HMKDesign& design, HMKError* error) {
                           return checkThreadIndex(design, option, from, error) &&
                                  checkThreadIndex(design, option, to, error) &&
                                  design.moveThreadFromIndex(from, to, error);
                       });
                   });
    options.valued("--append", "FILE",
                   "Append another design file; its origin lands 1 mm right of and 1 mm below "
                   "this design's origin, or where --at puts it",
                   [](const std::string& file) {
                       HMKEdit added = edit(appended(file, std::nullopt));
                       added.appendedFile = file;
                       return added;
                   });
    options.modifier("--at", "X,Y",
                     "After --append FILE: put the appended design's origin at X,Y (0.1 mm units)",
                     "--append", [](HMKEdit& append, const std::string& text) {
                         append.apply = appended(append.appendedFile, parsePoint("--at", text));
                     });
    options.valued("--palette", "NAME",
                   "Change every thread to its nearest colour in a palette (\"\" for individual "
                   "colours)",
                   [](const std::string& text) {
                       const std::string palette = parsePalette("--palette", text);
                       return edit([palette, option = "--palette " + text](HMKDesign& design,
                                                                           HMKError* error) {
                           for (std::size_t i = 0; i < design.numberOfThreads(); ++i) {
                               const HMKColor color = design.threads()[i].color;
                               if (!recolor(design, option, static_cast<std::int32_t>(i), color,
                                            palette, error)) {
                                   return false;
                               }
                           }
                           return true;
                       });
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
            std::string palette = parts.size() == 5 ? parsePalette("--recolor", parts[4]) : "";
            return edit([index, color, palette, option = "--recolor " + text](HMKDesign& design,
                                                                              HMKError* error) {
                return recolor(design, option, index, color, palette, error);
            });
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
            HMKEdit added = edit([vendor, code](HMKDesign& design, HMKError* error) {
                // Code -1 clears the hoop and reports no match, as asked.
                if (!design.setHoopFromVendor(vendor, code) && code != -1) {
                    if (error) {
                        *error = toolError("No " + vendor + " hoop has the code " +
                                           std::to_string(code) + ".");
                    }
                    return false;
                }
                return true;
            });
            // Removing the hoop suits every output.
            added.hoopVendor = code == -1 ? "" : vendor;
            return added;
        });
}

}  // namespace

bool checkThreadIndex(const HMKDesign& design, const std::string& option, std::int32_t index,
                      HMKError* error) {
    const std::size_t count = design.numberOfThreads();
    if (index >= 0 && static_cast<std::size_t>(index) < count) {
        return true;
    }
    if (error) {
        *error = usageError(option + ": thread " + std::to_string(index) + " is out of range " +
                            (count == 0 ? std::string("(the design has no threads)")
                                        : "(0 to " + std::to_string(count - 1) + ")"));
    }
    return false;
}

void addEditOptions(CLI::App& command, HMKEditList& edits) {
    EditOptions options(command, edits);
    addSelectionOptions(options);
    addTransformOptions(options);
    addStitchOptions(options);
    addThreadOptions(options);
}

bool applyEdits(HMKDesign& design, const HMKEditList& edits, HMKWarnings& warnings,
                HMKError* error) {
    for (const HMKEdit& edit : edits) {
        if (edit.needsSelection && !design.selectionActive()) {
            warnings.push_back(edit.option +
                               " changes nothing: no stitches are selected (select them first, "
                               "for example with --select-all)");
        }
        const HMKUncountedColorMatches placeholders(design.designPalette() == kUndefinedPalette);
        if (!edit.apply(design, error)) {
            return false;
        }
    }
    return true;
}
