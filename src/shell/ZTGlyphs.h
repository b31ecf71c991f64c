#pragma once
// The shell's command glyphs, drawn at run time so that they scale and need no image files.

#include <QIcon>
#include <QPixmap>

namespace zentrail {

class TZTImageList;

QIcon ShellGlyph(const char* name);
// The navigator's glyph of a message type or content code: the rows' own from images where they
// have one (a code of 100 or more is the custom glyph), a drawn one for the separators that rows
// show as bands, an empty pixmap otherwise.
QPixmap NavigatorGlyph(const TZTImageList* images, int code);
// Scratch pad lights: 0..6 lit in seven colours, 7 unlit.
QPixmap ScratchPadLight(int index, int size = 12);

}  // namespace zentrail
