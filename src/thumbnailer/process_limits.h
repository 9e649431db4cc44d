// Hard limits for a process that reads files it did not choose: file managers run the
// thumbnailer on whatever lands in a folder, so a hostile or broken file must cost a bounded
// amount of memory and time and then end the process, never hang it.
#pragma once

// The thumbnailer's own deadline; file managers do not all have one.
inline constexpr unsigned kThumbnailerTimeoutSeconds = 5;

// Caps the address space (far above what the largest accepted file needs), turns off core
// dumps and starts the deadline: when it passes, the process exits with status 1.
void limitThumbnailerProcess();

// Stops the deadline before the result is written, so a kill cannot leave a partial file.
void stopThumbnailerDeadline();
