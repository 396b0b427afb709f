#pragma once

/// \file
/// Everything the library offers except the definition of QuarvelSrv::SrsFormattingOptions. A server has its own
/// definition; other programs include "QuarvelSrv/SrsFormattingOptions.h".

/// \namespace CoordinateTransformation
/// CRS, their creation from names, their configuration, and the transformation of points.

/// \namespace QSHelpers
/// Numbers as text, and the failures of the helpers that read numbers and files.

/// \namespace QuarvelSrv
/// The types of the server that the library reads.

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/BBoxType.h"
#include "CoordinateTransformation/CRSindicationFormatInfo.h"
#include "CoordinateTransformation/CoordTransformer.h"
#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsPool.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "CoordinateTransformation/InstalledProjDirectory.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/PointTransformer.h"
#include "CoordinateTransformation/Proj4Crs.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "CoordinateTransformation/TransExecException.h"
#include "CoordinateTransformation/TransformationException.h"
#include "CoordinateTransformation/structured_exception.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/Exception.h"
#include "QSHelpers/FileNotFoundException.h"
#include "QSHelpers/NumericText.h"
#include "QSHelpers/UnexpectedException.h"
