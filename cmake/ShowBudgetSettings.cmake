# Settings that every target shares: language, warnings, sanitizers, output folders, compiler cache.

set( CMAKE_CXX_STANDARD 20 )
set( CMAKE_CXX_STANDARD_REQUIRED ON )
set( CMAKE_CXX_EXTENSIONS OFF )
set( CMAKE_POSITION_INDEPENDENT_CODE ON )
set( CMAKE_CXX_VISIBILITY_PRESET hidden )
set( CMAKE_VISIBILITY_INLINES_HIDDEN ON )
set( CMAKE_EXPORT_COMPILE_COMMANDS ON )

# Programs and the libraries that they load lie side by side, so a build tree runs as it stands.
set( CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin" )
set( CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin" )
set( CMAKE_BUILD_RPATH_USE_ORIGIN ON )
set( SHOWBUDGET_PLUGIN_DIR "${CMAKE_BINARY_DIR}/bin/subtools" )

# The sloppiness lets ccache keep what was compiled with a precompiled header.
find_program( CCACHE_PROGRAM ccache )
if( CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER )
	set( CMAKE_CXX_COMPILER_LAUNCHER
		"${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE_PROGRAM}"
	)
endif()

set( showbudgetWarnings -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual )
# The tessel interfaces end their life through their owner, never through the interface pointer: their destructors are
# protected and not virtual, which is what -Wnon-virtual-dtor accepts.
if( SHOWBUDGET_WERROR )
	list( APPEND showbudgetWarnings -Werror )
endif()
if( CMAKE_UNITY_BUILD )
	list( REMOVE_ITEM showbudgetWarnings -Wshadow ) # a file-local name is no matter to another file
endif()
add_compile_options( ${showbudgetWarnings} )

if( SHOWBUDGET_HARDENED )
	add_compile_definitions( _GLIBCXX_ASSERTIONS )
	# A sanitizer watches the same calls itself.
	if( NOT SHOWBUDGET_SANITIZERS )
		add_compile_definitions( _FORTIFY_SOURCE=2 )
	endif()
endif()

if( SHOWBUDGET_SANITIZERS )
	add_compile_options( -fsanitize=${SHOWBUDGET_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all )
	add_link_options( -fsanitize=${SHOWBUDGET_SANITIZERS} )
endif()
if( SHOWBUDGET_WITH_FUZZERS )
	add_compile_options( -fsanitize=fuzzer-no-link )
endif()
if( SHOWBUDGET_WITH_COVERAGE )
	add_compile_options( -fprofile-instr-generate -fcoverage-mapping )
	add_link_options( -fprofile-instr-generate )
endif()

find_package( Threads REQUIRED )
if( SHOWBUDGET_WITH_QT )
	find_package( Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Network Test )
endif()
if( SHOWBUDGET_WITH_TESTS )
	find_package( GTest REQUIRED )
	include( GoogleTest )
endif()
if( SHOWBUDGET_WITH_BENCH )
	find_package( benchmark REQUIRED )
endif()
