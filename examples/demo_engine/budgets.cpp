#include "budgets.h"

// The order of the definitions is the order in the window.
SHOWBUDGET_BUDGET( g_Physics, "Physics", 235, 110, 52 );
SHOWBUDGET_BUDGET( g_Animation, "Animation", 245, 190, 60 );
SHOWBUDGET_BUDGET( g_Scripting, "Scripting", 130, 200, 80 );
SHOWBUDGET_BUDGET( g_Streaming, "Streaming", 60, 180, 150 );
SHOWBUDGET_BUDGET( g_Particles, "Particles", 240, 130, 190 );
SHOWBUDGET_BUDGET( g_Visibility, "Visibility", 90, 200, 230 );
SHOWBUDGET_BUDGET( g_Rendering, "Rendering", 80, 130, 240 );
SHOWBUDGET_BUDGET( g_PostProcess, "Post Process", 160, 110, 230 );
SHOWBUDGET_BUDGET( g_Audio, "Audio", 215, 65, 80 );
SHOWBUDGET_BUDGET( g_Idle, "Idle", 150, 150, 160 );
