# Functions that make the targets of this project.

# showbudget_join( NAME )
# For targets whose files have more headers than lines of their own: SHOWBUDGET_JOIN compiles several of them at once.
function( showbudget_join name )
	if( SHOWBUDGET_JOIN )
		set_target_properties( ${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6 )
		# A file-local name is no matter to another file, nor to a type of the same file.
		target_compile_options( ${name} PRIVATE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage> )
	endif()
endfunction()

# showbudget_set_up_sanitizers( NAME [QT] )
# For a program that tests run: it brings along what the sanitizers are to know, in a build that has them. QT: it makes a
# QApplication.
function( showbudget_set_up_sanitizers name )
	if( NOT SHOWBUDGET_SANITIZERS OR NOT SHOWBUDGET_WITH_TESTS )
		return()
	endif()
	target_sources( ${name} PRIVATE $<TARGET_OBJECTS:sanitizer_options> )
	if( "QT" IN_LIST ARGN AND SHOWBUDGET_SANITIZERS MATCHES "address" )
		target_sources( ${name} PRIVATE $<TARGET_OBJECTS:sanitizer_application_start> )
		target_link_options( ${name} PRIVATE LINKER:--wrap=_ZN12QApplicationC1ERiPPci )
	endif()
endfunction()

# How test programs are compiled: parsing the headers of the test and widget libraries takes far longer than the tests'
# own lines, so they are parsed once (precompiled), and test code is not optimised. Hence the checks of the C library stay
# out, which need an optimising compiler, and so does what guides a fuzzer.
function( showbudget_compile_as_test name )
	target_compile_options( ${name} PRIVATE -O0 -g1 -U_FORTIFY_SOURCE
		$<$<BOOL:${SHOWBUDGET_WITH_FUZZERS}>:-fno-sanitize=fuzzer-no-link>
		$<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> $<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>
	)
endfunction()

# All programs that the tsan preset builds and runs.
add_custom_target( thread_tests )

# showbudget_add_test_program( NAME [property value...] )
# The whole program as two tests of CTest, halves that run at once. Starting a program anew for each of its test cases, as
# is handy while working, takes longer than most of them. Each half reports to results/NAME.HALF.json in the build folder,
# from which scripts/count-tests learns how many test cases there were.
function( showbudget_add_test_program name )
	math( EXPR timeout "${SHOWBUDGET_TEST_TIMEOUT} * 5" )
	foreach( half 0 1 )
		add_test( NAME ${name}.${half} COMMAND ${name} )
		set_tests_properties( ${name}.${half} PROPERTIES
			TIMEOUT ${timeout} ${ARGN} ENVIRONMENT
			"GTEST_TOTAL_SHARDS=2;GTEST_SHARD_INDEX=${half};GTEST_OUTPUT=json:${CMAKE_BINARY_DIR}/results/${name}.${half}.json"
		)
	endforeach()
endfunction()

# showbudget_test( NAME SOURCES file... LIBRARIES target... [QT] [LABELS label...] [PROPERTIES name value...] )
# A GoogleTest program whose every test case is a test of its own for CTest; with SHOWBUDGET_WHOLE_PROGRAMS the program is.
# With QT the program's main makes a QApplication on the offscreen platform and fails a test that causes a Qt warning it
# did not expect. The label "threads" is for programs in which threads meet and that can be watched by ThreadSanitizer;
# those with Qt, whose own locks it does not see, are labelled "threads-qt". PROPERTIES: of every test, for CTest; one
# value each.
function( showbudget_test name )
	cmake_parse_arguments( PARSE_ARGV 1 test "QT" "" "SOURCES;LIBRARIES;LABELS;PROPERTIES" )
	add_executable( ${name} ${test_SOURCES} )
	if( test_QT )
		target_link_libraries( ${name} PRIVATE ${test_LIBRARIES} test_support_qt )
		target_precompile_headers( ${name} REUSE_FROM test_support_qt )
		set_target_properties( ${name} PROPERTIES AUTOMOC ON )
		showbudget_set_up_sanitizers( ${name} QT )
	else()
		target_link_libraries( ${name} PRIVATE ${test_LIBRARIES} test_support )
		target_precompile_headers( ${name} REUSE_FROM test_support )
		showbudget_set_up_sanitizers( ${name} )
	endif()
	showbudget_compile_as_test( ${name} )
	showbudget_join( ${name} )
	set( properties ${test_PROPERTIES} )
	if( test_LABELS )
		list( APPEND properties LABELS "${test_LABELS}" )
	endif()
	if( SHOWBUDGET_WHOLE_PROGRAMS )
		showbudget_add_test_program( ${name} ${properties} )
	else()
		gtest_discover_tests( ${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
			PROPERTIES TIMEOUT "${SHOWBUDGET_TEST_TIMEOUT}" ${properties}
		)
	endif()
	if( "threads" IN_LIST test_LABELS )
		add_dependencies( thread_tests ${name} )
	endif()
endfunction()

# showbudget_bench( NAME SOURCES file... LIBRARIES target... )
# A Google Benchmark program. It is built with everything else, so that it cannot rot, and run by hand from the release
# preset; elsewhere its own code is not optimised, which would take longer than all else of it.
function( showbudget_bench name )
	cmake_parse_arguments( PARSE_ARGV 1 bench "" "" "SOURCES;LIBRARIES" )
	add_executable( ${name} ${bench_SOURCES} )
	target_link_libraries( ${name} PRIVATE ${bench_LIBRARIES} benchmark::benchmark )
	if( NOT CMAKE_BUILD_TYPE STREQUAL "Release" )
		target_compile_options( ${name} PRIVATE -O0 -g1 -U_FORTIFY_SOURCE )
	endif()
endfunction()
