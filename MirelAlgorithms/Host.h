/// The host's base types and services, under the library's own namespace.
#pragma once

#include <Brel/AttrContainer.h>
#include <Brel/VoxelGrid.h>
#include <MirelCore/MirelCore.h>
#include <VoskBase/Mat4d.h>
#include <VoskBase/Module.h>
#include <VoskBase/SVec2d.h>
#include <VoskBase/SmartPtr.h>
#include <VoskBase/String.h>
#include <VoskBase/Vec3d.h>

namespace MirelAlgorithms {

using Brel::AttrContainer;
using Brel::VoxelGrid;
using VoskBase::Mat4d;
using VoskBase::Module;
using VoskBase::SmartPtr;
using VoskBase::String;
using VoskBase::SVec2d;
using VoskBase::Vec3d;
using VoskBase::WeakHandle;

}  // namespace MirelAlgorithms
