// Where the time of a frame may go. Every subsystem's scopes name one of these.
#pragma once

#include "target/showbudget.h"

SHOWBUDGET_DECLARE_BUDGET( g_Physics );
SHOWBUDGET_DECLARE_BUDGET( g_Animation );
SHOWBUDGET_DECLARE_BUDGET( g_Scripting );
SHOWBUDGET_DECLARE_BUDGET( g_Streaming );
SHOWBUDGET_DECLARE_BUDGET( g_Particles );
SHOWBUDGET_DECLARE_BUDGET( g_Visibility );
SHOWBUDGET_DECLARE_BUDGET( g_Rendering );
SHOWBUDGET_DECLARE_BUDGET( g_PostProcess );
SHOWBUDGET_DECLARE_BUDGET( g_Audio );
SHOWBUDGET_DECLARE_BUDGET( g_Idle );
