#pragma once
// The shell's command glyphs, drawn at run time so that they scale and need no image files.

#include <QIcon>
#include <QPixmap>

namespace zentrail {

QIcon ShellGlyph(const char* name);
// Scratch pad lights: 0..6 lit in seven colours, 7 unlit.
QPixmap ScratchPadLight(int index, int size = 12);

}  // namespace zentrail
