// HMKThreadColorDialog: recolours one thread. The user picks a colour and a palette; the
// thread becomes the palette's nearest thread to that colour, or that very colour when no
// palette ("Individual colour") is chosen.
#pragma once

#include <optional>
#include <string>

#include <QDialog>

#include "model/color.h"
#include "model/thread.h"

class QColorDialog;
class QComboBox;

struct HMKThreadColorChoice {
    HMKColor color;
    // Palette id, or "" for the colour itself.
    std::string palette;
};

class HMKThreadColorDialog : public QDialog {
    Q_OBJECT
public:
    HMKThreadColorDialog(const HMKThread& thread, QWidget* parent = nullptr);
    HMKThreadColorChoice choice() const;
    QColorDialog* colorChooser() const { return chooser_; }
    QComboBox* paletteChooser() const { return palette_; }

    // Shows the dialog through the dialog hooks; none when cancelled.
    static std::optional<HMKThreadColorChoice> ask(QWidget* parent, const HMKThread& thread);

private:
    QColorDialog* chooser_ = nullptr;
    QComboBox* palette_ = nullptr;
};
