// Reads what the commands of kesto print, as whoever they print it for would.
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/require.h"

namespace fuzz
{
inline rapidjson::Document ReadJson( const std::string &text )
{
	rapidjson::Document document;
	document.Parse<rapidjson::kParseIterativeFlag>( text.data(), text.size() );
	Require( !document.HasParseError(), "what is printed as JSON is JSON" );
	return document;
}

// Comma-separated values, rows of fields (RFC 4180).
inline std::vector<std::vector<std::string>> ReadCsv( std::string_view text )
{
	std::vector<std::vector<std::string>> rows;
	std::string field;
	bool bQuoted = false;
	bool bRowBegins = true;
	for ( size_t i = 0; i < text.size(); i++ )
	{
		if ( bRowBegins )
			rows.emplace_back();
		bRowBegins = false;
		const char c = text[i];
		if ( c == '"' && bQuoted && i + 1 < text.size() && text[i + 1] == '"' )
			field += text[i++];
		else if ( c == '"' )
			bQuoted = !bQuoted;
		else if ( bQuoted || ( c != ',' && c != '\n' ) )
			field += c;
		else
		{
			rows.back().push_back( std::exchange( field, {} ) );
			bRowBegins = c == '\n';
		}
	}
	Require( bRowBegins && !bQuoted, "comma-separated values end with their last row" );
	return rows;
}

// The same, all rows as long as the headings.
inline std::vector<std::vector<std::string>> ReadTable( std::string_view text )
{
	std::vector<std::vector<std::string>> rows = ReadCsv( text );
	Require( !rows.empty(), "there are headings" );
	for ( const std::vector<std::string> &row : rows )
		Require( row.size() == rows.front().size(), "every row has a field for each heading" );
	return rows;
}
} // namespace fuzz
