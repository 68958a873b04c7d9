// The text form of KeyValues in memory; keyvaluesfile.cpp keeps it in files.
#include <unordered_map>

#include "asciitext.h"
#include "keel0/bufferstring.h"
#include "keel0/keyvalues.h"

namespace
{
bool IsBlank( char c )
{
	return c == ' ' || ( c >= '\t' && c <= '\r' );
}

bool EndsBareWord( char c )
{
	return IsBlank( c ) || c == '"' || c == '{' || c == '}' || c == '\0';
}

// -1 for a character that is no hexadecimal digit.
int HexDigit( char c )
{
	if ( c >= '0' && c <= '9' )
		return c - '0';
	const char lower = LowerCase( c );
	return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// For messages: what a byte that may be anything is.
std::string DescribeByte( char c )
{
	CBufferString text;
	const unsigned nByte = static_cast<unsigned char>( c );
	if ( nByte >= 0x20 && nByte < 0x7F )
		text.Format( "'%c'", c );
	else
		text.Format( "the byte 0x%02X", nByte );
	return text.Get();
}
} // namespace

// Reads one text. The first error ends it: every function returns false from then on.
class CKeyValuesReader
{
public:
	explicit CKeyValuesReader( std::string_view text )
		: m_Text( text )
	{
	}

	bool Read( KeyValues &tree );
	const KeyValues::ParseError &Error() const { return m_Error; }

private:
	struct Position
	{
		uint32_t m_nLine = 1;
		uint32_t m_nColumn = 1;
	};
	// Where each name of a block stands; names in lower case.
	using NamesOfBlock = std::unordered_map<std::string, Position>;

	bool AtEnd() const { return m_nAt == m_Text.size(); }
	char Current() const { return m_Text[m_nAt]; }
	void Step();
	bool SkipBlanksAndComments();
	bool ReadWord( std::string &word, const char *pWhat );
	bool ReadQuoted( std::string &word );
	bool ReadEscape( std::string &word );
	bool ReadBlock( KeyValues &tree, int nLevel );
	bool ReadContent( KeyValues &entry, int nLevel );
	bool Fail( const Position &position, std::string message );

	std::string_view m_Text;
	size_t m_nAt = 0;
	int m_nEntries = 0;
	Position m_Position;
	KeyValues::ParseError m_Error;
};

bool CKeyValuesReader::Fail( const Position &position, std::string message )
{
	m_Error = { position.m_nLine, position.m_nColumn, std::move( message ) };
	return false;
}

void CKeyValuesReader::Step()
{
	if ( Current() == '\n' )
		m_Position = { m_Position.m_nLine + 1, 1 };
	else
		m_Position.m_nColumn++;
	m_nAt++;
}

// Moves to the next word or brace, or to the end of the text. Only the byte 0 can be wrong here.
bool CKeyValuesReader::SkipBlanksAndComments()
{
	bool bInComment = false;
	for ( ; !AtEnd(); Step() )
	{
		if ( Current() == '\0' )
			return Fail( m_Position, "the byte 0 cannot stand in a text" );
		if ( Current() == '\n' )
			bInComment = false;
		else if ( Current() == '/' && m_Text.substr( m_nAt, 2 ) == "//" )
			bInComment = true;
		if ( !bInComment && !IsBlank( Current() ) )
			return true;
	}
	return true;
}

// Reads a word at the present position; pWhat says in messages what was expected.
bool CKeyValuesReader::ReadWord( std::string &word, const char *pWhat )
{
	if ( AtEnd() )
		return Fail( m_Position, std::string( "expected " ) + pWhat + ", found the end of the text" );
	if ( Current() == '"' )
		return ReadQuoted( word );
	if ( EndsBareWord( Current() ) )
		return Fail( m_Position, std::string( "expected " ) + pWhat + ", found " + DescribeByte( Current() ) );
	for ( ; !AtEnd() && !EndsBareWord( Current() ); Step() )
		word += Current();
	if ( !AtEnd() && Current() == '\0' )
		return Fail( m_Position, "the byte 0 cannot stand in a text" );
	return true;
}

bool CKeyValuesReader::ReadQuoted( std::string &word )
{
	const Position begin = m_Position;
	for ( Step(); !AtEnd() && Current() != '\n'; )
	{
		if ( Current() == '\0' )
			return Fail( m_Position, "the byte 0 cannot stand in a text" );
		if ( Current() == '"' )
		{
			Step();
			return true;
		}
		if ( Current() == '\\' )
		{
			if ( !ReadEscape( word ) )
				return false;
			continue;
		}
		word += Current();
		Step();
	}
	return Fail( begin, "the quoted text that begins here does not end on its line" );
}

bool CKeyValuesReader::ReadEscape( std::string &word )
{
	const Position begin = m_Position;
	const std::string_view rest = m_Text.substr( m_nAt + 1 );
	const char kind = rest.empty() ? '\n' : rest[0];
	size_t nLength = 1; // characters behind the backslash
	switch ( kind )
	{
		case '"':
		case '\\':
			word += kind;
			break;
		case 'n':
			word += '\n';
			break;
		case 'r':
			word += '\r';
			break;
		case 't':
			word += '\t';
			break;
		case 'x':
		{
			const int nHigh = rest.size() > 1 ? HexDigit( rest[1] ) : -1;
			const int nLow = rest.size() > 2 ? HexDigit( rest[2] ) : -1;
			if ( nHigh < 0 || nLow < 0 )
				return Fail( begin, "\\x needs two hexadecimal digits" );
			if ( nHigh == 0 && nLow == 0 )
				return Fail( begin, "the byte 0 cannot stand in a text" );
			word += static_cast<char>( nHigh << 4 | nLow );
			nLength = 3;
			break;
		}
		case '\n':
			return Fail( begin, "a backslash cannot be the last character of its line" );
		default:
			return Fail( begin, "a backslash cannot stand before " + DescribeByte( kind ) );
	}
	for ( size_t i = 0; i <= nLength; i++ )
		Step();
	return true;
}

// Reads what follows a name.
bool CKeyValuesReader::ReadContent( KeyValues &entry, int nLevel )
{
	if ( !SkipBlanksAndComments() )
		return false;
	if ( !AtEnd() && Current() == '{' )
		return ReadBlock( entry, nLevel );
	entry.m_bHasValue = true;
	return ReadWord( entry.m_Value, "a value or '{'" );
}

bool CKeyValuesReader::ReadBlock( KeyValues &tree, int nLevel )
{
	const Position begin = m_Position;
	if ( nLevel > KeyValues::MAX_LEVELS )
		return Fail( begin, "more than " + std::to_string( KeyValues::MAX_LEVELS ) + " blocks inside one another" );
	NamesOfBlock names;
	Step();
	while ( SkipBlanksAndComments() )
	{
		const Position at = m_Position;
		if ( AtEnd() )
			return Fail( at, "the block that begins in line " + std::to_string( begin.m_nLine ) + ", column " +
								 std::to_string( begin.m_nColumn ) + " does not end" );
		if ( Current() == '}' )
		{
			Step();
			return true;
		}
		if ( ++m_nEntries > KeyValues::MAX_ENTRIES )
			return Fail( at, "more than " + std::to_string( KeyValues::MAX_ENTRIES ) + " entries" );
		std::string name;
		if ( !ReadWord( name, "a name or '}'" ) )
			return false;
		const auto [pFirst, bNew] = names.try_emplace( LowerCase( name ), at );
		if ( !bNew )
			return Fail( at, "the name stands in this block already, in line " +
								 std::to_string( pFirst->second.m_nLine ) + ", column " +
								 std::to_string( pFirst->second.m_nColumn ) );
		if ( !ReadContent( *tree.m_Entries.emplace_back( std::make_unique<KeyValues>( name.c_str() ) ), nLevel + 1 ) )
			return false;
	}
	return false;
}

bool CKeyValuesReader::Read( KeyValues &tree )
{
	constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
	if ( m_Text.size() > KeyValues::MAX_TEXT_SIZE )
		return Fail( { 0, 0 }, "the text is longer than " + std::to_string( KeyValues::MAX_TEXT_SIZE ) + " bytes" );
	if ( m_Text.starts_with( BYTE_ORDER_MARK ) )
		m_Text.remove_prefix( BYTE_ORDER_MARK.size() );

	std::string name;
	KeyValues fresh( "" );
	if ( !SkipBlanksAndComments() || !ReadWord( name, "a name" ) || !ReadContent( fresh, 1 ) ||
		 !SkipBlanksAndComments() )
		return false;
	if ( !AtEnd() )
		return Fail( m_Position, "expected the end of the text, found " + DescribeByte( Current() ) );
	tree.m_Name = std::move( name );
	tree.m_Value = std::move( fresh.m_Value );
	tree.m_bHasValue = fresh.m_bHasValue;
	tree.m_Entries = std::move( fresh.m_Entries );
	return true;
}

bool KeyValues::LoadFromBuffer( std::string_view text, ParseError *pError )
{
	CKeyValuesReader reader( text );
	if ( reader.Read( *this ) )
		return true;
	if ( pError )
		*pError = reader.Error();
	return false;
}

namespace
{
void AppendQuoted( std::string &out, std::string_view text )
{
	static constexpr char DIGITS[] = "0123456789ABCDEF";
	out += '"';
	for ( const char c : text )
	{
		const unsigned nByte = static_cast<unsigned char>( c );
		if ( c == '"' || c == '\\' )
			( out += '\\' ) += c;
		else if ( c == '\n' )
			out += "\\n";
		else if ( c == '\r' )
			out += "\\r";
		else if ( c == '\t' )
			out += "\\t";
		else if ( nByte < 0x20 || nByte == 0x7F )
			( ( out += "\\x" ) += DIGITS[nByte >> 4] ) += DIGITS[nByte & 15];
		else
			out += c;
	}
	out += '"';
}

void AppendEntry( std::string &out, const KeyValues &entry, size_t nIndent )
{
	out.append( nIndent, '\t' );
	AppendQuoted( out, entry.GetName() );
	if ( !entry.IsSubTree() )
	{
		out += "\t\t";
		AppendQuoted( out, entry.GetValue() );
		out += '\n';
		return;
	}
	out.append( 1, '\n' ).append( nIndent, '\t' ) += "{\n";
	for ( int i = 0; i < entry.GetCount(); i++ )
		AppendEntry( out, *entry.GetEntry( i ), nIndent + 1 );
	out.append( nIndent, '\t' ) += "}\n";
}
} // namespace

std::string KeyValues::SaveToBuffer() const
{
	std::string text;
	AppendEntry( text, *this, 0 );
	return text;
}
