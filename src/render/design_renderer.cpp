// Stand-in until the renderer lands: draws nothing.
#include "model/design.h"
#include "render/drawing_context.h"

void HMKDesign::drawDesignInRect(const HMKRect&, HMKDrawingContext&, bool, bool, bool,
                                 std::int32_t) const {}
