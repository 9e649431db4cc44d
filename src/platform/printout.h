// The printed forms of a design, painted onto any paged device (a QPrinter from the print
// dialog or its preview, a QPdfWriter for "Export as PDF" and `hemlark render --worksheet`):
//
// - the worksheet: the design picture scaled to fit the page, its name, size, stitch count,
//   sewing time and hoop, and the thread list with colour swatches, names, codes, palettes
//   and the stitches sewn with each thread (continued on further pages when long);
// - the template: the design at true size 1:1 with its centre cross and hoop outline, to lay
//   on the fabric when hooping, tiled over several pages with alignment marks when it does
//   not fit on one.
//
// The device's page layout decides the paper and margins; drawing is in millimetres.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include <QPageSize>
#include <QPagedPaintDevice>

#include "model/design.h"
#include "model/error.h"
#include "model/sewing_time.h"
#include "model/units.h"

// What a printout shows (the print switches of the preferences).
struct HMKPrintOptions {
    bool showJumps = false;
    bool showGrid = false;
    bool showCenter = true;
    bool showHoop = true;
    bool showFirst = true;
    bool showLast = true;
    bool showStructure = false;
    // Flat thread instead of the shaded one.
    bool fastMode = false;
    // The 1:1 template instead of the worksheet.
    bool printTemplate = false;
    HMKMeasurementUnit unit = HMKMeasurementUnit::millimetres;
    HMKSewingTimeSettings timing;
};

// The template's tiling: pages side by side overlap by this much, and the alignment marks
// sit in the middle of the overlap.
inline constexpr double kTemplateOverlapMillimetres = 15;

// The number of pages the printout takes on pages of the given printable size (mm).
int printoutPageCount(const HMKDesign& design, const HMKPrintOptions& options,
                      QSizeF printableMillimetres);

// Paints every page onto the device, which must not be painted on yet; false when the
// device cannot be painted on. Needs a QGuiApplication (the text is drawn with fonts).
bool paintPrintout(const HMKDesign& design, QPagedPaintDevice& device,
                   const HMKPrintOptions& options);

// The printout as a PDF file on paper of the given size with 10 mm margins, written
// atomically. Needs a QGuiApplication.
bool writePrintoutPdf(const HMKDesign& design, const std::filesystem::path& path,
                      const HMKPrintOptions& options,
                      const QPageSize& pageSize = QPageSize(QPageSize::A4),
                      HMKError* error = nullptr);
