/// \file
/// canvaro: the document model and edit history of a raster picture editor.
///
/// This header includes the whole public API: the library (namespace Kelbra::Canvaro) and the
/// platform layer it is built on (Kelbra, Kelbra::Core, Kelbra::Proc, Kelbra::Conf,
/// Kelbra::Drevin). Link the CMake target Canvaro::canvaro. A host starts with
/// ICanvaroUndo::Create (canvaro/Undo/ICanvaroUndo.h).
#pragma once

// Platform layer.
#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Conf/IFormatCodecVideo.h"
#include "kelbra/Conf/IFormatFile.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/CoreManager.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/DataStream.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/EventHandlerList.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Core/TextEncoding.h"
#include "kelbra/Drevin/ISerializable.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "kelbra/Exception.h"
#include "kelbra/Path.h"
#include "kelbra/Proc/BufferPool.h"
#include "kelbra/Proc/Color.h"
#include "kelbra/Proc/CropInfo.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/Proc/ImplNames.h"
#include "kelbra/Proc/PixFmtInfo.h"
#include "kelbra/Proc/Settings.h"
#include "kelbra/Proc/SettingsEffectTranspose.h"
#include "kelbra/ROI.h"
#include "kelbra/RefCount.h"

// Version.
#include "canvaro/version.h"

// Foundations.
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/foundation/SerializeNames.h"
#include "canvaro/foundation/ToolsId.h"

// Settings records.
#include "canvaro/settings/Blender.h"
#include "canvaro/settings/EffectSettings.h"
#include "canvaro/settings/EffectsSettings.h"
#include "canvaro/settings/ICanvaroBrush.h"
#include "canvaro/settings/ISettingsPainter.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"

// Shapes.
#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/EllipseInfo.h"
#include "canvaro/shapes/IRenderingType.h"
#include "canvaro/shapes/InfoTypeBase.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/LineInfoBase.h"
#include "canvaro/shapes/MarkerInfo.h"
#include "canvaro/shapes/PositionType.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "canvaro/shapes/RectangleInfoBase.h"
#include "canvaro/shapes/RenderingTypeBase.h"
#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "canvaro/shapes/ShapeInfoBase.h"
#include "canvaro/shapes/ShapeInfoT.h"
#include "canvaro/shapes/ShapeSerializeNames.h"
#include "canvaro/shapes/ShapeType.h"
#include "canvaro/shapes/ShapedArrowInfo.h"
#include "canvaro/shapes/TextInfo.h"

// Undo engine, frame storage, masks, shape histories and the document.
#include "canvaro/Undo/DrawerEventForwarder.h"
#include "canvaro/Undo/DocumentPackage.h"
#include "canvaro/Undo/DrawerEventObserver.h"
#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroShape.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/Undo/ICanvaroVideoInfoProvider.h"
#include "canvaro/Undo/IDrawerEventHandler.h"
#include "canvaro/Undo/IMultiUndoItem.h"
#include "canvaro/Undo/ISavable.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/Undo/MaskCounter.h"
#include "canvaro/Undo/MaskUndo.h"
#include "canvaro/Undo/ShapeUndo.h"
#include "canvaro/Undo/ShapeUndoItem.h"
#include "canvaro/Undo/StorageNames.h"
#include "canvaro/Undo/TUndoImpl.h"
#include "canvaro/Undo/UndoManager.h"

// Utilities: raw frame files, drawable frame info, text rendering.
#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/CoreUtil/SerializerHelper.h"
