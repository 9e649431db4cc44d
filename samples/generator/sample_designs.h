// The designs bundled in samples/, drawn by program so that anyone can make them again.
#pragma once

#include "model/design.h"

// A daisy: leaves, two rings of satin petals, a filled centre with a satin border (5 colours,
// about 10,000 stitches, 84 mm across, so it fits the small hoops of every writable format).
HMKDesign makeFlower();
// A heart outlined with a satin border over a running underlay, with three smaller running
// outlines inside (4 colours).
HMKDesign makeHeart();
// Three nested five-pointed stars, each sewn as a triple running outline (3 colours).
HMKDesign makeStar();
