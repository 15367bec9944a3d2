#pragma once

#include <QLatin1String>
#include <QtGlobal>

// The layout file, in one place: the keys of its top level and of each
// item's record, the limits of an item's size and position, and the grid
// items sit on. The item, the file and the checker read them from here.
namespace LayoutFormat {

// Top level: the items, then what the window keeps of itself.
inline constexpr QLatin1String ItemsKey("items");
inline constexpr QLatin1String WindowGeometryKey("windowGeometry");
inline constexpr QLatin1String WindowStateKey("windowState");
inline constexpr QLatin1String MaximizedKey("isMaximized");
inline constexpr QLatin1String FullScreenKey("isFullScreen");

// One item's record, in the order it is written.
inline constexpr QLatin1String TypeKey("type");
inline constexpr QLatin1String SignalsKey("signals");
inline constexpr QLatin1String XKey("x");
inline constexpr QLatin1String YKey("y");
inline constexpr QLatin1String WidthKey("width");
inline constexpr QLatin1String HeightKey("height");
inline constexpr QLatin1String ConfigKey("config");
inline constexpr QLatin1String ZKey("z");

// Positions and sizes snap to this step; the design scene draws it.
inline constexpr qreal GridSize = 10.0;
// Neither side of an item exceeds this, however it is sized: a layout
// asking for 1e9 (a typo, a damaged file) would otherwise make widgets,
// and the drawings they keep, of gigabytes. Screens are smaller.
inline constexpr qreal MaxSize = 10000.0;
// Positions and z values read from a record are clamped to this magnitude.
inline constexpr qreal MaxExtent = 20000.0;

} // namespace LayoutFormat
