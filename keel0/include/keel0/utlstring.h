// An owned, zero-terminated text.
#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

class CUtlString
{
public:
	CUtlString() = default;
	CUtlString( const char *pText )
		: m_Text( pText ? pText : "" )
	{
	} // null is the empty text
	CUtlString( std::string_view text )
		: m_Text( text )
	{
	}

	const char *Get() const { return m_Text.c_str(); } // never null; valid until the text changes
	size_t Length() const { return m_Text.size(); }    // bytes
	bool IsEmpty() const { return m_Text.empty(); }
	void Set( const char *pText ) { m_Text = pText ? pText : ""; }
	std::string_view View() const { return m_Text; }

	friend bool operator==( const CUtlString &, const CUtlString & ) = default;
	friend auto operator<=>( const CUtlString &, const CUtlString & ) = default;

private:
	std::string m_Text;
};
