// Marks a class that crosses the boundary between the host and a sub-tool.
#pragma once

// Both sides are built with hidden symbols. The type information of an interface must be one and the same on both sides
// for dynamic_cast between the interfaces of one object.
#define TESSEL_INTERFACE __attribute__( ( visibility( "default" ) ) )
