// 'HELO', 'PRNT', 'DROP', 'CMND': the conversation around the samples. Numbers are big-endian, texts are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "wire/chunks.h"

namespace wire
{
// 'HELO': u32 protocol version, u32 process id, u64 ticks per second (0 from a console), then texts: name, or name NUL
// token, or name NUL token NUL refusal. The console speaks first; an engine sends nothing before it got a valid one.
struct Hello
{
	uint32_t m_nProtocol = PROTOCOL_VERSION;
	uint32_t m_nProcessId = 0;
	uint64_t m_nTickFrequency = 0;
	std::string m_Name = {};
	std::string m_Token = {};   // what an engine and its consoles share, see IsToken; empty for none
	std::string m_Refusal = {}; // from an engine: one line that says why it closes now; empty when it does not
};
constexpr size_t MAX_HELLO_NAME = 255;    // bytes; a longer name is cut on writing and on reading
constexpr size_t MAX_HELLO_TOKEN = 255;   // bytes
constexpr size_t MAX_HELLO_REFUSAL = 255; // bytes; cut like a name, and at its first line feed

// Whether a text can be a token: 1 to MAX_HELLO_TOKEN bytes, none of them a control character.
bool IsToken( std::string_view text );

// A token that is none is left out: half a token would only be a wrong one.
std::vector<uint8_t> WriteHello( const Hello &hello );
// None when the payload is too short for its fixed fields. The version is not judged here, nor is the token: it comes
// as it was sent, since it is compared and never shown. Texts that are not there are empty; what follows the refusal's
// NUL is ignored.
std::optional<Hello> ReadHello( std::span<const uint8_t> payload );

// 'PRNT': u32 severity, then the text up to the end of the payload (no terminator, usually ending in a line feed).
enum class PrintSeverity : uint32_t
{
	Message = 0,
	Warning = 1,
	Error = 2
};
struct PrintLine
{
	PrintSeverity m_Severity = PrintSeverity::Message;
	std::string_view m_Text; // into the payload
};
constexpr size_t MAX_PRINT_TEXT = 16384; // bytes; longer texts are cut on writing
std::vector<uint8_t> WritePrint( PrintSeverity severity, std::string_view text );
std::optional<PrintLine> ReadPrint( std::span<const uint8_t> payload ); // an unknown severity counts as Message

// 'DROP': u64 frames that were dropped since the connection began, because the console read too slowly.
constexpr size_t DROPPED_SIZE = 8;
std::vector<uint8_t> WriteDropped( uint64_t nFrames );
std::optional<uint64_t> ReadDropped( std::span<const uint8_t> payload );

// 'CMND': the command line up to the end of the payload.
constexpr size_t MAX_COMMAND_TEXT = 4096; // bytes; a longer command is refused by both sides
} // namespace wire
