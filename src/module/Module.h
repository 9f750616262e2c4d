#pragma once

#include <boost/uuid/uuid.hpp>

#include <ZxCore3D/types/Export.h>

/// Brings the library and its sibling libraries up: to be called before anything else of it is
/// used. Calls are counted; the work is done by the first, and each needs one `Deinit_ZxCore3D`.
/// Calls from several threads are to be serialised by the host. What fails leaves as an exception:
/// the count then stays 0, and a later call starts anew.
ZX_CORE3D_API void Init_ZxCore3D();

/// Undoes one `Init_ZxCore3D`; the last takes the sibling libraries down. Without an open one it
/// does nothing.
ZX_CORE3D_API void Deinit_ZxCore3D();

/// Identifiers for callers of `zx::TRef::QueryInterface`; no class of this library answers one.
extern ZX_CORE3D_API const boost::uuids::uuid IID_IProperties;
extern ZX_CORE3D_API const boost::uuids::uuid IID_ICommands;
extern ZX_CORE3D_API const boost::uuids::uuid IID_IGeometries;
extern ZX_CORE3D_API const boost::uuids::uuid IID_IObjectHandlers;
