#include "options.h"

#include <charconv>
#include <limits>
#include <string_view>

#include "physics.h"

namespace demo
{
namespace
{
std::string Quoted( std::string_view text )
{
	std::string quoted( 1, '"' );
	quoted += text;
	quoted += '"';
	return quoted;
}

template <typename Number>
bool ReadNumber( std::string_view name, std::string_view text, uint64_t nLimit, Number &out, std::string &error )
{
	uint64_t nValue = 0;
	const auto [pEnd, problem] = std::from_chars( text.data(), text.data() + text.size(), nValue );
	if ( problem != std::errc() || pEnd != text.data() + text.size() || nValue > nLimit )
	{
		error = std::string( name ) + ": " + Quoted( text ) + " is not a number from 0 to " + std::to_string( nLimit );
		return false;
	}
	out = static_cast<Number>( nValue );
	return true;
}

bool ReadOption( std::string_view name, std::string_view value, Options &options, std::string &error )
{
	if ( name == "--port" )
		return ReadNumber( name, value, std::numeric_limits<uint16_t>::max(), options.m_nPort, error );
	if ( name == "--bodies" )
		return ReadNumber( name, value, CPhysics::MAX_BODIES, options.m_nBodies, error );
	if ( name == "--frames" )
		return ReadNumber( name, value, std::numeric_limits<uint32_t>::max(), options.m_nFrames.emplace(), error );
	if ( name == "--bind" )
		options.m_Address = value;
	else if ( name == "--record" )
		options.m_Recording = value;
	else if ( name == "--picture" )
		options.m_Picture = value;
	else if ( name == "--name" )
		options.m_Name = value;
	else
	{
		error = "unknown option " + Quoted( name ) + "; --help lists them";
		return false;
	}
	return true;
}
} // namespace

std::optional<Options> ParseOptions( int nArguments, char **ppArguments, std::string &error )
{
	Options options;
	for ( int i = 1; i < nArguments; i++ )
	{
		std::string_view name = ppArguments[i];
		if ( name == "--help" )
		{
			options.m_bHelp = true;
			return options;
		}
		std::string_view value;
		if ( const size_t nEquals = name.find( '=' ); nEquals != std::string_view::npos )
		{
			value = name.substr( nEquals + 1 );
			name = name.substr( 0, nEquals );
		}
		else if ( i + 1 < nArguments )
			value = ppArguments[++i];
		else
		{
			error = Quoted( name ) + " is no option or lacks its value; --help lists them";
			return std::nullopt;
		}
		if ( !ReadOption( name, value, options, error ) )
			return std::nullopt;
	}
	return options;
}

const char *Usage()
{
	return "usage: demo_engine [OPTION]...\n"
		   "A small engine without a window that can be watched with Show Budget.\n"
		   "\n"
		   "  --port N         listen on this port, 0 for any free one (default 27190)\n"
		   "  --bind ADDRESS   listen on this address (default 127.0.0.1)\n"
		   "  --name NAME      what the console shows (default \"demo engine\")\n"
		   "  --bodies N       bodies of the physics, 0 to 20000 (default 2500)\n"
		   "  --frames N       end after this many frames\n"
		   "  --record FILE    record all frames to this file\n"
		   "  --picture FILE   write what the last frame drew to this file (.ppm) at the end\n"
		   "  --help           show this text\n";
}
} // namespace demo
