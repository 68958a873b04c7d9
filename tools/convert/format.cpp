#include "tools/convert/format.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace convert
{
struct FormatTraits
{
	Format m_Format;
	const char *m_pName;
	bool m_bRead;
	bool m_bWritten;
};

static constexpr FormatTraits FORMATS[] = {
	{ Format::Kesto, "kesto", true, true },
	{ Format::Chrome, "chrome", true, true },
	{ Format::Speedscope, "speedscope", true, true },
	{ Format::Folded, "folded", true, true },
	{ Format::Perf, "perf", true, false },
	{ Format::Csv, "csv", false, true },
};

static const FormatTraits &TraitsOf( Format format )
{
	return FORMATS[static_cast<size_t>( format )];
}

const char *NameOf( Format format )
{
	return TraitsOf( format ).m_pName;
}

bool CanRead( Format format )
{
	return TraitsOf( format ).m_bRead;
}

bool CanWrite( Format format )
{
	return TraitsOf( format ).m_bWritten;
}

std::optional<Format> FormatOfName( std::string_view name )
{
	for ( const FormatTraits &traits : FORMATS )
		if ( name == traits.m_pName )
			return traits.m_Format;
	return {};
}

std::optional<Format> FormatOfPath( std::string_view path )
{
	static constexpr std::pair<std::string_view, Format> ENDS[] = {
		{ ".kesto", Format::Kesto },
		{ ".speedscope.json", Format::Speedscope },
		{ ".speedscope", Format::Speedscope },
		{ ".json", Format::Chrome },
		{ ".folded", Format::Folded },
		{ ".csv", Format::Csv },
	};
	for ( const auto &[end, format] : ENDS )
		if ( path.ends_with( end ) )
			return format;
	return {};
}

static bool Has( std::string_view text, std::string_view part )
{
	return text.find( part ) != std::string_view::npos;
}

// Whether text that begins with a bracket goes on as JSON does; stacks of samples may begin with brackets, too.
static bool IsJson( std::string_view head )
{
	const size_t nNext = head.find_first_not_of( " \t\r\n", 1 );
	if ( nNext == std::string_view::npos )
		return true;
	return std::string_view( head[0] == '{' ? "\"}" : "{]" ).find( head[nNext] ) != std::string_view::npos;
}

static Format FormatOfJson( std::string_view head )
{
	if ( head[0] == '[' || Has( head, "\"traceEvents\"" ) )
		return Format::Chrome;
	const bool bSpeedscope = Has( head, "speedscope" ) || Has( head, "\"profiles\"" ) || Has( head, "\"shared\"" );
	return bSpeedscope ? Format::Speedscope : Format::Chrome;
}

static bool EndsWithNumber( std::string_view line )
{
	while ( !line.empty() && std::isspace( static_cast<unsigned char>( line.back() ) ) )
		line.remove_suffix( 1 );
	const size_t nNumber = line.find_last_not_of( "0123456789.eE+-" );
	return nNumber != std::string_view::npos && nNumber + 1 < line.size() &&
		   ( line[nNumber] == ' ' || line[nNumber] == '\t' );
}

std::optional<Format> FormatOfContent( std::string_view head )
{
	if ( head.starts_with( std::string_view( "\1\0\0\0", 4 ) ) )
		return Format::Kesto;
	const bool bMark = head.starts_with( "\xEF\xBB\xBF" );
	head.remove_prefix( bMark ? 3 : 0 );
	head.remove_prefix( std::min( head.find_first_not_of( " \t\r\n" ), head.size() ) );
	if ( ( head.starts_with( '{' ) || head.starts_with( '[' ) ) && IsJson( head ) )
		return FormatOfJson( head );
	if ( head.find( '\0' ) != std::string_view::npos )
		return {};
	for ( size_t nFirst = 0; nFirst < head.size(); )
	{
		const size_t nEnd = std::min( head.find( '\n', nFirst ), head.size() );
		const std::string_view line = head.substr( nFirst, nEnd - nFirst );
		nFirst = nEnd + 1;
		if ( line.empty() || line[0] == '#' )
			continue;
		if ( EndsWithNumber( line ) )
			return Format::Folded;
		return Has( line, ": " ) || line.ends_with( ':' ) ? std::optional( Format::Perf ) : std::nullopt;
	}
	return {};
}
} // namespace convert
