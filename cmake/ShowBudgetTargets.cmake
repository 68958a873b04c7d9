# Functions that make the targets of this project.

# What the leak checker is to leave out, for every program that CTest runs.
set( showbudgetLeakOptions
	"LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0"
)

# How test programs are compiled: parsing the headers of the test and widget libraries takes far longer than the tests'
# own lines, so they are parsed once (precompiled), and test code is not optimised.
function( showbudget_compile_as_test name )
	target_compile_options( ${name} PRIVATE -O0 -g1
		$<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> $<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>
	)
endfunction()

# showbudget_test( NAME SOURCES file... LIBRARIES target... [QT] [LABELS label...] [PROPERTIES name value...] )
# A GoogleTest program whose every test case is a test of its own for CTest. With QT the program's main makes a
# QApplication on the offscreen platform and fails a test that causes a Qt warning it did not expect.
function( showbudget_test name )
	cmake_parse_arguments( PARSE_ARGV 1 test "QT" "" "SOURCES;LIBRARIES;LABELS;PROPERTIES" )
	add_executable( ${name} ${test_SOURCES} )
	set( environment "${showbudgetLeakOptions}" )
	if( test_QT )
		target_link_libraries( ${name} PRIVATE ${test_LIBRARIES} test_support_qt )
		target_precompile_headers( ${name} REUSE_FROM test_support_qt )
		list( APPEND environment "QT_QPA_PLATFORM=offscreen" )
		set_target_properties( ${name} PROPERTIES AUTOMOC ON )
	else()
		target_link_libraries( ${name} PRIVATE ${test_LIBRARIES} test_support )
		target_precompile_headers( ${name} REUSE_FROM test_support )
	endif()
	showbudget_compile_as_test( ${name} )
	if( SHOWBUDGET_JOIN_TESTS )
		set_target_properties( ${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6 )
		# A file-local name is no matter to another file, nor to a type of the same file.
		target_compile_options( ${name} PRIVATE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage> )
	endif()
	gtest_discover_tests( ${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
		PROPERTIES TIMEOUT 180 ENVIRONMENT "${environment}" LABELS "${test_LABELS}" ${test_PROPERTIES} )
endfunction()

# showbudget_fuzzer( NAME SOURCES file... LIBRARIES target... CORPUS folder )
# A fuzz target that defines LLVMFuzzerTestOneInput. The fuzz preset links it with libFuzzer; every other build links a
# main that replays files, and the corpus runs as an ordinary test.
function( showbudget_fuzzer name )
	cmake_parse_arguments( PARSE_ARGV 1 fuzz "" "CORPUS" "SOURCES;LIBRARIES" )
	add_executable( ${name} ${fuzz_SOURCES} )
	target_link_libraries( ${name} PRIVATE ${fuzz_LIBRARIES} )
	if( SHOWBUDGET_WITH_FUZZERS )
		target_link_options( ${name} PRIVATE -fsanitize=fuzzer )
		set( replayArguments -runs=0 "${fuzz_CORPUS}" )
	else()
		target_link_libraries( ${name} PRIVATE fuzz_replay_main )
		set( replayArguments "${fuzz_CORPUS}" )
	endif()
	add_test( NAME ${name}.corpus COMMAND ${name} ${replayArguments} )
	set_tests_properties( ${name}.corpus PROPERTIES TIMEOUT 180 LABELS fuzz
		ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${showbudgetLeakOptions}"
	)
endfunction()

# showbudget_bench( NAME SOURCES file... LIBRARIES target... )
# A Google Benchmark program. It is built with everything else, so that it cannot rot, and run by hand from the release
# preset; elsewhere its own code is not optimised, which would take longer than all else of it.
function( showbudget_bench name )
	cmake_parse_arguments( PARSE_ARGV 1 bench "" "" "SOURCES;LIBRARIES" )
	add_executable( ${name} ${bench_SOURCES} )
	target_link_libraries( ${name} PRIVATE ${bench_LIBRARIES} benchmark::benchmark )
	if( NOT CMAKE_BUILD_TYPE STREQUAL "Release" )
		target_compile_options( ${name} PRIVATE -O0 -g1 )
	endif()
endfunction()
