# find_package( ShowBudget ) makes the target ShowBudget::target, the library for engines.
include( CMakeFindDependencyMacro )
find_dependency( Threads )
include( "${CMAKE_CURRENT_LIST_DIR}/ShowBudgetTargets.cmake" )
