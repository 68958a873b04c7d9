// The chunks that an engine process and the console exchange: their codes, versions, sizes and limits.
// docs/protocol.md tells the whole conversation.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wire
{
// A chunk type is four characters with the first one in the most significant byte.
constexpr uint32_t FourCC( const char ( &text )[5] )
{
	return static_cast<uint32_t>( static_cast<unsigned char>( text[0] ) ) << 24 |
		   static_cast<uint32_t>( static_cast<unsigned char>( text[1] ) ) << 16 |
		   static_cast<uint32_t>( static_cast<unsigned char>( text[2] ) ) << 8 |
		   static_cast<uint32_t>( static_cast<unsigned char>( text[3] ) );
}

// Both sides: the first chunk on a connection.
constexpr uint32_t CHUNK_HELLO = FourCC( "HELO" );

// From the engine.
constexpr uint32_t CHUNK_CATEGORIES = FourCC( "PCAT" );   // the budgets: names and colours
constexpr uint32_t CHUNK_SAMPLE = FourCC( "PCPU" );       // one frame: a time for each budget
constexpr uint32_t CHUNK_MINIPROFILER = FourCC( "PMPF" ); // scopes: counts, times, names
constexpr uint32_t CHUNK_PRINT = FourCC( "PRNT" );        // a line for the console
constexpr uint32_t CHUNK_DROPPED = FourCC( "DROP" );      // how many frames could not be sent so far
constexpr uint32_t CHUNK_BEAT = FourCC( "BEAT" );         // nothing else was to be sent for BEAT_MILLISECONDS; empty

// To the engine.
constexpr uint32_t CHUNK_SAMPLING = FourCC( "KSTO" );             // start or stop sampling
constexpr uint32_t CHUNK_MINIPROFILER_CONTROL = FourCC( "KMPC" ); // whether scopes are wanted
constexpr uint32_t CHUNK_MINIPROFILER_NAMES = FourCC( "KMPN" );   // scopes whose names are wanted
constexpr uint32_t CHUNK_COMMAND = FourCC( "CMND" );              // a console command

constexpr uint16_t CHUNK_VERSION = 2;    // of every chunk in both directions
constexpr uint32_t PROTOCOL_VERSION = 2; // exchanged in 'HELO'

constexpr size_t CHUNK_HEADER_SIZE = 12;
constexpr uint32_t MAX_CHUNK_LENGTH = 64u << 20; // payload bytes; a longer chunk ends the connection
constexpr uint16_t DEFAULT_PORT = 27190;
constexpr uint32_t BEAT_MILLISECONDS = 1000;

constexpr uint32_t MAX_CATEGORIES = 4096;
} // namespace wire
