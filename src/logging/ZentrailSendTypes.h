#pragma once
// The small value types that members of the send family take where the standard library has no
// type of its own: pictures as pixels, keys and mouse buttons, a window's description, a screen's,
// and collections of published objects.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ZentrailFormatters.h"

namespace zentrail {

// Pixels in memory. The sender encodes them as PNG.
enum TZentrailPixelFormat { pfGray8, pfRGB24, pfRGBA32, pfBGRA32 };
struct TZentrailImage {
  int Width = 0;
  int Height = 0;
  TZentrailPixelFormat Format = pfRGBA32;
  const void* Pixels = nullptr;  // null: no picture
  std::size_t Stride = 0;        // bytes from one row to the next; 0 for packed rows
  bool IsNull() const { return !Pixels || Width <= 0 || Height <= 0; }
};
// Pictures larger than this in either direction are refused: the viewer would not show them.
inline constexpr int ztMaxImageSide = 20000;

// Shift state flags, as a set.
enum TZentrailShiftFlag : uint8_t {
  ssShift = 1,
  ssAlt = 2,
  ssCtrl = 4,
  ssLeft = 8,
  ssRight = 16,
  ssMiddle = 32,
  ssDouble = 64
};
using TZentrailShiftState = uint8_t;
enum TZentrailMouseButton { mbLeft, mbRight, mbMiddle };

// The name of a virtual-key code: "VK_RETURN", "VK_F5", "VK_A".
std::string VirtualKeyName(uint16_t key);
// "[ssShift, ssCtrl]", "[]" for none.
std::string ShiftStateText(TZentrailShiftState shift);

// What a window system tells about a window. Handle 0 is no window.
struct TZentrailWindowInfo {
  uint64_t Handle = 0;
  std::string Caption;
  int Top = 0;
  int Left = 0;
  int Width = 0;
  int Height = 0;
  std::string ClassName;
  std::string UserData;
  std::vector<std::string> Styles;
  std::vector<std::string> ExStyles;
};

// The screens of the desktop for the system information; a program without a window system has
// none, and the sender says so.
struct TZentrailScreenInfo {
  int Monitors = 0;
  int PrimaryWidth = 0;
  int PrimaryHeight = 0;
  TZentrailRect VirtualScreen;
  int PixelsPerInch = 96;
  int ColorDepth = 0;  // bits per pixel, 0 unknown
};

// A collection: items that publish their properties, shown one entry each.
class IZentrailCollection : public IZentrailObjectInfo {
 public:
  virtual std::size_t Count() const = 0;
  virtual const IZentrailPublished* Item(std::size_t index) const = 0;
};

// The type name a dynamic array of T is sent under, or null for types the viewer has no name for.
template <class T>
constexpr const char* DynArrayTypeName() {
  if constexpr (std::is_same_v<T, bool>) return "TBooleanDynArray";
  else if constexpr (std::is_same_v<T, int32_t>) return "TIntegerDynArray";
  else if constexpr (std::is_same_v<T, uint32_t>) return "TCardinalDynArray";
  else if constexpr (std::is_same_v<T, uint16_t>) return "TWordDynArray";
  else if constexpr (std::is_same_v<T, int16_t>) return "TSmallIntDynArray";
  else if constexpr (std::is_same_v<T, uint8_t>) return "TByteDynArray";
  else if constexpr (std::is_same_v<T, int8_t>) return "TShortIntDynArray";
  else if constexpr (std::is_same_v<T, int64_t>) return "TInt64DynArray";
  else if constexpr (std::is_same_v<T, float>) return "TSingleDynArray";
  else if constexpr (std::is_same_v<T, double>) return "TDoubleDynArray";
  else if constexpr (std::is_same_v<T, std::string>) return "TStringDynArray";
  else return nullptr;
}

}  // namespace zentrail
