// canvaro: the document model and edit history of a raster picture editor.
//
// This header includes the whole public API: the library (namespace Kelbra::Canvaro) and the
// platform layer it is built on (Kelbra, Kelbra::Core, Kelbra::Proc, Kelbra::Conf,
// Kelbra::Drevin). Link the CMake target Canvaro::canvaro.
#pragma once

// Platform layer.
#include "kelbra/Exception.h"
#include "kelbra/Path.h"
#include "kelbra/ROI.h"
#include "kelbra/RefCount.h"
#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/DataStream.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Core/TextEncoding.h"
#include "kelbra/Drevin/ISerializable.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "kelbra/Proc/Color.h"
#include "kelbra/Proc/ImplNames.h"
#include "kelbra/Proc/Settings.h"
#include "kelbra/Proc/CropInfo.h"
#include "kelbra/Proc/SettingsEffectTranspose.h"

// Foundations.
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/SerializeNames.h"
#include "canvaro/foundation/Throw.h"
#include "canvaro/foundation/ToolsId.h"

// Settings records.
#include "canvaro/settings/Blender.h"
#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/EffectsSettings.h"
#include "canvaro/settings/ISettingsPainter.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"

// Utilities.
#include "canvaro/CoreUtil/SerializerHelper.h"
