# Functions that make the fuzz targets of this project.

# All fuzz targets: what the fuzz and coverage presets build.
add_custom_target( fuzz_targets )

# showbudget_write_fuzz_target_list()
# Writes fuzz_targets.txt into the build folder, behind the last showbudget_fuzzer: a line for each target, with tabs
# between its name, corpus folder, dictionary, longest input, and the files of the decoder that it feeds (with blanks
# between them, relative to the tree). scripts/fuzz, scripts/test and scripts/coverage read it.
function( showbudget_write_fuzz_target_list )
	get_property( lines GLOBAL PROPERTY SHOWBUDGET_FUZZ_TARGETS )
	file( WRITE "${CMAKE_BINARY_DIR}/fuzz_targets.txt" "${lines}" )
endfunction()

# showbudget_fuzzer( fuzz_NAME [QT] SOURCES file... LIBRARIES target... DECODER file...
#                    [CORPUS folder] [DICTIONARY file] [MAX_LENGTH bytes] )
# A fuzz target that defines LLVMFuzzerTestOneInput. The asan and fuzz presets link it with libFuzzer; every other build
# links a main that replays files, and the corpus runs as an ordinary test. Corpus and dictionary are corpus/NAME and
# NAME.dict where nothing else is said, an input has at most 4096 bytes. DECODER: the files, relative to the tree, whose
# lines the corpus has to reach. QT: the target makes a QApplication.
function( showbudget_fuzzer name )
	cmake_parse_arguments( PARSE_ARGV 1 fuzz "QT" "CORPUS;DICTIONARY;MAX_LENGTH" "SOURCES;LIBRARIES;DECODER" )
	string( REGEX REPLACE "^fuzz_" "" shortName ${name} )
	foreach( default "CORPUS corpus/${shortName}" "DICTIONARY ${shortName}.dict" "MAX_LENGTH 4096" )
		string( REGEX MATCH "^([A-Z_]+) (.*)$" default "${default}" )
		if( NOT fuzz_${CMAKE_MATCH_1} )
			set( fuzz_${CMAKE_MATCH_1} "${CMAKE_MATCH_2}" )
		endif()
	endforeach()
	cmake_path( ABSOLUTE_PATH fuzz_CORPUS OUTPUT_VARIABLE corpus )
	cmake_path( ABSOLUTE_PATH fuzz_DICTIONARY OUTPUT_VARIABLE dictionary )
	list( TRANSFORM fuzz_DECODER PREPEND "${CMAKE_SOURCE_DIR}/" OUTPUT_VARIABLE decoder )
	foreach( file "${corpus}" "${dictionary}" ${decoder} )
		if( NOT EXISTS "${file}" )
			message( FATAL_ERROR "${name} needs ${file}, which does not exist" )
		endif()
	endforeach()
	list( JOIN fuzz_DECODER " " decoder )
	set_property( GLOBAL APPEND_STRING PROPERTY SHOWBUDGET_FUZZ_TARGETS
		"${name}\t${corpus}\t${dictionary}\t${fuzz_MAX_LENGTH}\t${decoder}\n"
	)

	add_executable( ${name} ${fuzz_SOURCES} )
	target_link_libraries( ${name} PRIVATE ${fuzz_LIBRARIES} fuzz_support )
	add_dependencies( fuzz_targets ${name} )
	if( fuzz_QT )
		showbudget_set_up_sanitizers( ${name} QT )
	else()
		showbudget_set_up_sanitizers( ${name} )
	endif()
	if( SHOWBUDGET_WITH_FUZZERS )
		target_link_options( ${name} PRIVATE -fsanitize=fuzzer )
		set( replayArguments -runs=0 "-artifact_prefix=${CMAKE_BINARY_DIR}/" "${corpus}" )
	else()
		target_link_libraries( ${name} PRIVATE fuzz_replay_main )
		set( replayArguments "${corpus}" )
	endif()
	add_test( NAME ${name}.corpus COMMAND ${name} ${replayArguments} )
	set_tests_properties( ${name}.corpus PROPERTIES TIMEOUT 180 LABELS fuzz
		ENVIRONMENT "QT_QPA_PLATFORM=offscreen"
	)
endfunction()
