#pragma once

#include "zvf/abi.h"

namespace zvf {

// Registers one new class object: 0 on success, 0x8007000E for a null
// object, or the failing call's negative result. On refusal the reference
// taken by QueryInterface stays held, so the refused object stays alive.
Status RegisterOne(IFilterRegistry* registry, IVideoFilter* object);

// Creates and registers the 27 filters in their fixed order; a failure of
// one never stops the sequence.
void RegisterAll(IFilterRegistry* registry, IHost* host);

}  // namespace zvf
