#pragma once

namespace Zx3D {

/// What a reader asks its query function.
struct QUERYHDR {
  unsigned long Code; ///< what is asked: `QUERY_FIND_ITEM`, unless the record comes from a caller
  unsigned long Kind; ///< the kind of the item
  unsigned long Id;   ///< the item's id
};

/// `QUERYHDR::Code` of the search for an item.
constexpr unsigned long QUERY_FIND_ITEM = 43;

/// Kinds of items.
constexpr unsigned long ITEM_OBJECT = 4;
constexpr unsigned long ITEM_GEOMETRY = 7;
constexpr unsigned long ITEM_CONTROLLER = 31;
constexpr unsigned long ITEM_SHADER = 32;
constexpr unsigned long ITEM_PROGRAM = 33;
constexpr unsigned long ITEM_TECHNIQUE = 34;
constexpr unsigned long ITEM_MATERIAL = 35;
constexpr unsigned long ITEM_TEXTURE = 36;

} // namespace Zx3D
