/// \file
/// The text form of property trees: JSON, exact in both directions.
///
/// Serialize writes a tree as JSON text and Deserialize reads such text back into an equal tree:
/// integers stay integers (32 or 64 bits), doubles stay doubles bit for bit (also infinities, NaN
/// payloads and -0.0), strings come back byte for byte even when they are not UTF-8, and class
/// identifiers, entry order and collection order are kept. docs/property-json.md describes the
/// layout.
///
///   std::string text;
///   Core::PropertySerializer::Serialize(tree, Core::DataOutputString::Create(text), true);
///   Core::Property copy;
///   Core::PropertySerializer::Deserialize(copy, Core::DataInputString::Create(text));
///
/// Malformed text (bad syntax, a wrong shape, a value out of range, nesting deeper than
/// kMaxDepth, a truncated file) throws PropertyException naming the place; stream failures throw
/// FileException.
#pragma once

#include <string>
#include <string_view>

#include "kelbra/Core/DataStream.h"
#include "kelbra/Core/Property.h"

namespace Kelbra::Core {

class PropertySerializer {
 public:
  /// Nodes nested deeper than this are refused on reading.
  static constexpr int kMaxDepth = 256;

  /// Writes `tree` to `out`; `pretty` indents the text by two spaces per level, otherwise the
  /// text is one line. Does not close `out`.
  static void Serialize(const Property& tree, const IDataOutputPtr& out, bool pretty);
  /// Replaces `tree` with the tree read from the rest of `in`. On failure `tree` is unchanged.
  static void Deserialize(Property& tree, const IDataInputPtr& in);

  static std::string ToString(const Property& tree, bool pretty = true);
  static Property FromString(std::string_view text);
};

}  // namespace Kelbra::Core
