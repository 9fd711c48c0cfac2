// The file operations of document packages: pictures linked or copied durably, checksums, the
// manifest, and the walk over a saved document's picture file names. Internal to the package
// calls (DocumentPackage.h); every failure throws CanvaroException naming the file and the
// system's reason.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <string>

#include "kelbra/Core/Property.h"
#include "kelbra/Path.h"
#include "kelbra/Proc/IDataVideo.h"

namespace Kelbra::Canvaro::Package {

inline const char* const kDocumentFile = "document.json";
inline const char* const kManifestFile = "manifest.json";
inline const char* const kPicturesFolder = "pictures";

// What the manifest records of one picture.
struct PictureRecord {
  std::uint64_t size = 0;
  std::string checksum;  // XXH3 64-bit, 16 lowercase hex digits
  bool operator==(const PictureRecord&) const = default;
};
using Manifest = std::map<std::string, PictureRecord>;

// The manifest of `folder`; throws InvalidDocument when it is missing or malformed.
Manifest ReadManifest(const ioPath& folder);
// Writes the manifest of `folder` atomically and durably.
void WriteManifest(const ioPath& folder, const Manifest& manifest);

// Size and checksum of `file`, read whole.
PictureRecord Describe(const ioPath& file);

// Makes `to` (which must not exist) the same bytes as `from`: a hard link where the file system
// allows it, else a copy; then flushes it to the disk. Returns false when `to` already exists.
bool LinkOrCopy(const ioPath& from, const ioPath& to);
// Writes `picture` as the raw frame file `to` (which must not exist), durably. Returns false
// when `to` already exists.
bool WritePicture(const Proc::IDataVideoConstPtr& picture, const ioPath& to);
// Flushes the entries of `folder` (new links, renames, removals) to the disk.
void SyncFolder(const ioPath& folder);
// True when both paths name the same file (one inode).
bool SameFile(const ioPath& a, const ioPath& b);

// Calls `visit` on every picture file name of a saved document's tree (non-empty "FileName"
// strings), letting it replace the name.
void ForEachPictureName(Core::Property& tree, const std::function<void(std::string&)>& visit);

// What a platform failure says, without the exception's type name.
std::string DescriptionOf(const std::exception& error);

// Throws CanvaroException `code` with "<what> '<file>': <reason of errno>".
[[noreturn]] void ThrowFileError(int code, const std::string& what, const ioPath& file, int error);

}  // namespace Kelbra::Canvaro::Package
