// The design on the system clipboard. Copying offers three forms at once, so that pasting
// works everywhere: the archived design under the application's private MIME type (pasted
// back into a design), a PNG picture (image editors) and the design's description (text
// editors). The forms are produced only when a program asks for them, so copying a large
// design costs no more than copying its stitches.
#pragma once

#include <optional>

#include <QClipboard>
#include <QMimeData>

#include "model/design.h"
#include "model/error.h"

// The private type of an archived design (see model/archive.h).
inline constexpr char kHMKDesignMimeType[] = "application/x-hemlark-design";
inline constexpr char kHMKPngMimeType[] = "image/png";
inline constexpr char kHMKTextMimeType[] = "text/plain";
// The longer side of the pasted picture, in pixels.
inline constexpr int kPastedPictureSide = 1000;

// Mime data holding the design in the three forms (also usable for drags).
QMimeData* makeDesignMimeData(HMKDesign design);
// The design in mime data; none without the private type, or with an error when the
// archive is damaged.
std::optional<HMKDesign> designFromMimeData(const QMimeData* data, HMKError* error = nullptr);

// --- The system clipboard (needs a QGuiApplication) ------------------------------------------
void writeDesignToClipboard(HMKDesign design);
bool clipboardHasDesign();
std::optional<HMKDesign> readDesignFromClipboard(HMKError* error = nullptr);
