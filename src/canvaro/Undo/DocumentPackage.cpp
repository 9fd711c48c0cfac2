#include "canvaro/Undo/DocumentPackage.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <utility>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/PackageFiles.h"
#include "canvaro/foundation/Log.h"
#include "canvaro/foundation/Throw.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace Kelbra::Canvaro {

namespace {

using namespace Package;

constexpr int kMaxNameDraws = 10000;

// A picture name no file in `pictures` has: 16 random hex digits.
std::string NewPictureName(std::mt19937_64& random) {
  char name[24];
  std::snprintf(name, sizeof name, "p%016llx.raw", static_cast<unsigned long long>(random()));
  return name;
}

bool IsPlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

Core::Property ReadDocumentText(const ioPath& folder) {
  Core::Property tree;
  try {
    Core::PropertySerializer::Deserialize(tree,
                                          Core::DataInputFile::Create(folder / kDocumentFile));
  } catch (const Core::CoreException& e) {
    ThrowCoded(
        CanvaroError::InvalidDocument,
        "'" + folder.utf8() + "' is not a readable document package: " + Package::DescriptionOf(e),
        BOOST_CURRENT_LOCATION);
  }
  return tree;
}

// Makes `folder` and its pictures folder; the error names the folder and the reason.
void MakeFolders(const ioPath& folder) {
  std::error_code error;
  std::filesystem::create_directories((folder / kPicturesFolder).native(), error);
  if (error) {
    ThrowCoded(CanvaroError::SwapFileFailure,
               "Cannot make the package folder '" + (folder / kPicturesFolder).utf8() +
                   "': " + error.message(),
               BOOST_CURRENT_LOCATION);
  }
}

// After a save has been committed: removes pictures the document no longer names and files left
// by interrupted writes, and trims the manifest to what is left. Failures here lose nothing.
void RemoveUnnamed(const ioPath& folder, const Manifest& named) {
  std::error_code error;
  for (const auto& entry :
       std::filesystem::directory_iterator((folder / kPicturesFolder).native(), error)) {
    const std::string name = entry.path().filename().string();
    if (named.count(name) == 0) std::filesystem::remove(entry.path(), error);
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder.native(), error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(".") && name.find(".tmp-") != std::string::npos) {
      std::filesystem::remove(entry.path(), error);
    }
  }
  WriteManifest(folder, named);
}

}  // namespace

void SaveDocument(const ICanvaroUndo& document, const ioPath& folder) {
  const FrameStorage& storage = document.GetFrameStorage();
  const ioPath& swap = storage.GetSwapDirectory();
  Core::Property tree;
  document.Serialize(Drevin::SerializerProperty::Create(tree));
  document.WaitForPendingSaves();
  // A failed storage hands out no picture, but what it still has (files written, pictures whose
  // write failed) goes into the package; only pictures that are truly gone make the save fail.
  std::map<std::string, Index> frameOfFile;
  std::vector<std::string> missing;
  for (Index i = 0; i < storage.GetCount(); ++i) {
    const std::string name = storage.GetFileName(i).utf8();
    if (!name.empty()) frameOfFile.emplace(name, i);
    if (storage.IsFrameLost(i)) missing.push_back("frame " + std::to_string(i));
  }
  MakeFolders(folder);
  const ioPath pictures = folder / kPicturesFolder;
  Manifest previous;
  if ((folder / kManifestFile).exists()) {
    try {
      previous = ReadManifest(folder);
    } catch (const CanvaroException&) {
      // A damaged manifest names nothing worth keeping; the save writes a whole new one.
    }
  }

  std::mt19937_64 random(std::random_device{}());
  std::map<std::string, std::string> renamed;  // swap file name -> picture name
  Manifest named;                              // the pictures the new document names
  std::vector<ioPath> added;
  // Makes a new picture of the package under a fresh name through `make`, which returns false
  // when the name is taken; records it in the manifest.
  const auto AddPicture = [&](const std::function<bool(const std::string&)>& make) {
    for (int draw = 0; draw < kMaxNameDraws; ++draw) {
      const std::string candidate = NewPictureName(random);
      if (!make(candidate)) continue;
      added.push_back(pictures / candidate);
      named[candidate] = Describe(pictures / candidate);
      return candidate;
    }
    ThrowCoded(CanvaroError::InvalidState, "No free picture name in '" + pictures.utf8() + "'",
               BOOST_CURRENT_LOCATION);
  };
  try {
    ForEachPictureName(tree, [&](std::string& name) {
      const auto done = renamed.find(name);
      if (done != renamed.end()) {
        name = done->second;
        return;
      }
      const ioPath source = swap / ioPath(name).filename();
      struct stat info {};
      if (::stat(source.native().c_str(), &info) != 0) {
        const int error = errno;
        const auto frame = frameOfFile.find(name);
        const Proc::IDataVideoPtr picture =
            frame != frameOfFile.end() ? storage.GetFrameInMemory(frame->second) : nullptr;
        if (!picture) {
          missing.push_back("'" + source.utf8() + "' (" + std::strerror(error) + ")");
          renamed.emplace(name, name);
          return;
        }
        const std::string rescued = AddPicture([&](const std::string& candidate) {
          return WritePicture(picture, pictures / candidate);
        });
        renamed.emplace(name, rescued);
        name = rescued;
        return;
      }
      // A picture saved before is the same file (a hard link) and keeps its record.
      std::string picture;
      for (const auto& [known, record] : previous) {
        if (record.size == static_cast<std::uint64_t>(info.st_size) &&
            SameFile(source, pictures / known)) {
          picture = known;
          named[picture] = record;
          break;
        }
      }
      if (picture.empty()) {
        picture = AddPicture(
            [&](const std::string& candidate) { return LinkOrCopy(source, pictures / candidate); });
      }
      renamed.emplace(name, picture);
      name = picture;
    });
    if (!missing.empty()) {
      std::string list;
      for (const std::string& gone : missing) list += (list.empty() ? "" : ", ") + gone;
      ThrowCoded(CanvaroError::SwapFileFailure,
                 "The document cannot be saved: " + std::to_string(missing.size()) +
                     " of its pictures are gone: " + list,
                 BOOST_CURRENT_LOCATION);
    }
    SyncFolder(pictures);
    // The manifest lists the old pictures too until the new document is in place.
    Manifest both = named;
    for (const auto& [name, record] : previous) {
      if ((pictures / name).exists()) both.emplace(name, record);
    }
    WriteManifest(folder, both);
    auto out =
        Core::DataOutputFile::Create(folder / kDocumentFile, Core::DataOutputFile::Mode::Atomic);
    Core::PropertySerializer::Serialize(tree, out, /*pretty=*/true);
    out->Close();
  } catch (const Core::CoreException& e) {
    for (const ioPath& file : added) ::unlink(file.native().c_str());
    ThrowCoded(CanvaroError::SwapFileFailure, Package::DescriptionOf(e), BOOST_CURRENT_LOCATION);
  } catch (...) {
    for (const ioPath& file : added) ::unlink(file.native().c_str());
    throw;
  }
  try {
    RemoveUnnamed(folder, named);
  } catch (const std::exception& e) {
    CANVARO_LOG(WARNING) << "Saved '" << folder << "', but could not tidy it: " << e.what();
  }
}

ICanvaroUndoPtr OpenDocument(const ioPath& folder, const ioPath& swapDirectory,
                             std::function<std::string()> nameGenerator) {
  if (swapDirectory.empty()) {
    ThrowCoded(CanvaroError::InvalidArgument, "Opening a package needs a swap directory",
               BOOST_CURRENT_LOCATION);
  }
  const Manifest manifest = ReadManifest(folder);
  Core::Property tree = ReadDocumentText(folder);
  const ioPath pictures = folder / kPicturesFolder;

  // Every picture is checked before anything is made.
  ForEachPictureName(tree, [&](std::string& name) {
    const auto record = manifest.find(name);
    if (!IsPlainName(name) || record == manifest.end()) {
      ThrowCoded(CanvaroError::InvalidDocument,
                 "The package '" + folder.utf8() + "' names a picture '" + name +
                     "' that its manifest does not list",
                 BOOST_CURRENT_LOCATION);
    }
  });
  std::map<std::string, bool> checked;
  ForEachPictureName(tree, [&](std::string& name) {
    if (!checked.emplace(name, true).second) return;
    const ioPath file = pictures / name;
    if (!file.exists()) {
      ThrowCoded(CanvaroError::InvalidDocument,
                 "Picture '" + file.utf8() + "' of the package is missing", BOOST_CURRENT_LOCATION);
    }
    if (Describe(file) != manifest.at(name)) {
      ThrowCoded(CanvaroError::InvalidDocument,
                 "Picture '" + file.utf8() +
                     "' of the package is damaged (its size or checksum "
                     "differs from the manifest)",
                 BOOST_CURRENT_LOCATION);
    }
  });

  std::map<std::string, std::string> linked;  // picture name -> swap file name
  std::vector<ioPath> made;
  try {
    ForEachPictureName(tree, [&](std::string& name) {
      const auto done = linked.find(name);
      if (done != linked.end()) {
        name = done->second;
        return;
      }
      std::string target;
      for (int draw = 0; target.empty(); ++draw) {
        if (draw == kMaxNameDraws) {
          ThrowCoded(CanvaroError::InvalidState,
                     "No free swap file name in '" + swapDirectory.utf8() + "'",
                     BOOST_CURRENT_LOCATION);
        }
        const std::string candidate = nameGenerator();
        if (IsPlainName(candidate) && LinkOrCopy(pictures / name, swapDirectory / candidate)) {
          target = candidate;
        }
      }
      made.push_back(swapDirectory / target);
      linked.emplace(name, target);
      name = target;
    });
    ICanvaroUndoPtr document = ICanvaroUndo::Create(swapDirectory, std::move(nameGenerator));
    document->Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
    return document;
  } catch (...) {
    for (const ioPath& file : made) ::unlink(file.native().c_str());
    throw;
  }
}

std::vector<std::string> CheckDocumentPackage(const ioPath& folder) {
  std::vector<std::string> problems;
  Manifest manifest;
  Core::Property tree;
  try {
    manifest = ReadManifest(folder);
    tree = ReadDocumentText(folder);
  } catch (const CanvaroException& e) {
    problems.push_back(e.what());
    return problems;
  }
  std::map<std::string, bool> checked;
  ForEachPictureName(tree, [&](std::string& name) {
    if (!checked.emplace(name, true).second) return;
    const ioPath file = folder / kPicturesFolder / name;
    const auto record = manifest.find(name);
    if (!IsPlainName(name) || record == manifest.end()) {
      problems.push_back("picture '" + name + "' is not listed in the manifest");
    } else if (!file.exists()) {
      problems.push_back("picture '" + file.utf8() + "' is missing");
    } else {
      try {
        const PictureRecord found = Describe(file);
        if (found.size != record->second.size) {
          problems.push_back("picture '" + file.utf8() + "' has " + std::to_string(found.size) +
                             " bytes, the manifest says " + std::to_string(record->second.size));
        } else if (found.checksum != record->second.checksum) {
          problems.push_back("picture '" + file.utf8() + "' is damaged (checksum " +
                             found.checksum + ", the manifest says " + record->second.checksum +
                             ")");
        }
      } catch (const CanvaroException& e) {
        problems.push_back(e.what());
      }
    }
  });
  return problems;
}

}  // namespace Kelbra::Canvaro
