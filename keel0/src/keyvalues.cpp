#include "keel0/keyvalues.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <limits>

#include <locale.h>

#include "asciitext.h"

namespace
{
// Numbers are kept with '.' whatever locale the process has chosen.
locale_t PlainLocale()
{
	static locale_t plain = newlocale( LC_ALL_MASK, "C", nullptr );
	return plain;
}
} // namespace

KeyValues::KeyValues( const char *pName )
	: m_Name( pName ? pName : "" )
{
}

KeyValues::~KeyValues() = default;

const char *KeyValues::GetName() const
{
	return m_Name.c_str();
}

int KeyValues::GetInt( const char *pKey, int nDefault ) const
{
	const KeyValues *pEntry = FindKey( pKey );
	if ( !pEntry || !pEntry->m_bHasValue )
		return nDefault;
	const char *pText = pEntry->m_Value.c_str();
	char *pEnd = nullptr;
	const long long nValue = strtoll_l( pText, &pEnd, 10, PlainLocale() ); // out of range gives the nearest
	if ( pEnd == pText )
		return nDefault;
	return static_cast<int>(
		std::clamp<long long>( nValue, std::numeric_limits<int>::min(), std::numeric_limits<int>::max() ) );
}

float KeyValues::GetFloat( const char *pKey, float flDefault ) const
{
	const KeyValues *pEntry = FindKey( pKey );
	if ( !pEntry || !pEntry->m_bHasValue )
		return flDefault;
	const char *pText = pEntry->m_Value.c_str();
	char *pEnd = nullptr;
	const float flValue = strtof_l( pText, &pEnd, PlainLocale() );
	return pEnd == pText ? flDefault : flValue;
}

const char *KeyValues::GetString( const char *pKey, const char *pDefault ) const
{
	const KeyValues *pEntry = FindKey( pKey );
	return pEntry && pEntry->m_bHasValue ? pEntry->m_Value.c_str() : pDefault;
}

void KeyValues::SetInt( const char *pKey, int nValue )
{
	ValueEntry( pKey ).m_Value = std::to_string( nValue );
}

void KeyValues::SetFloat( const char *pKey, float flValue )
{
	char text[32]; // the shortest text that reads back as the same number has 15 characters at most
	const std::to_chars_result end = std::to_chars( std::begin( text ), std::end( text ), flValue );
	ValueEntry( pKey ).m_Value.assign( text, end.ptr );
}

void KeyValues::SetString( const char *pKey, const char *pValue )
{
	// pValue may be the text of the entry that it replaces.
	std::string value = pValue ? pValue : "";
	ValueEntry( pKey ).m_Value = std::move( value );
}

// The entry of that name as a value, whatever it was before.
KeyValues &KeyValues::ValueEntry( const char *pKey )
{
	KeyValues *pEntry = FindKey( pKey, true );
	pEntry->m_Entries.clear();
	pEntry->m_bHasValue = true;
	return *pEntry;
}

KeyValues *KeyValues::MakeCopy() const
{
	auto pCopy = std::make_unique<KeyValues>( m_Name.c_str() );
	pCopy->m_Value = m_Value;
	pCopy->m_bHasValue = m_bHasValue;
	pCopy->m_Entries.reserve( m_Entries.size() );
	for ( const auto &pEntry : m_Entries )
		pCopy->m_Entries.emplace_back( pEntry->MakeCopy() );
	return pCopy.release();
}

KeyValues *KeyValues::FindKey( const char *pKey, bool bCreate )
{
	const std::string_view key = pKey ? pKey : "";
	for ( const auto &pEntry : m_Entries )
		if ( EqualIgnoringCase( pEntry->m_Name, key ) )
			return pEntry.get();
	if ( !bCreate )
		return nullptr;
	// Something with entries is a tree.
	m_bHasValue = false;
	m_Value.clear();
	return m_Entries.emplace_back( std::make_unique<KeyValues>( pKey ) ).get();
}

const KeyValues *KeyValues::FindKey( const char *pKey ) const
{
	return const_cast<KeyValues *>( this )->FindKey( pKey, false ); // changes nothing without bCreate
}

bool KeyValues::RemoveKey( const char *pKey )
{
	const KeyValues *pFound = FindKey( pKey );
	return pFound && std::erase_if( m_Entries, [pFound]( const auto &pEntry ) { return pEntry.get() == pFound; } ) > 0;
}

KeyValues *KeyValues::AddSubTree( KeyValues *pSubTree )
{
	assert( pSubTree && pSubTree != this );
	std::unique_ptr<KeyValues> pOwned( pSubTree );
	m_bHasValue = false;
	m_Value.clear();
	for ( auto &pEntry : m_Entries )
		if ( EqualIgnoringCase( pEntry->m_Name, pSubTree->m_Name ) )
		{
			pEntry = std::move( pOwned );
			return pSubTree;
		}
	m_Entries.push_back( std::move( pOwned ) );
	return pSubTree;
}

int KeyValues::GetCount() const
{
	return static_cast<int>( m_Entries.size() );
}

KeyValues *KeyValues::GetEntry( int nIndex )
{
	return nIndex >= 0 && nIndex < GetCount() ? m_Entries[static_cast<size_t>( nIndex )].get() : nullptr;
}

const KeyValues *KeyValues::GetEntry( int nIndex ) const
{
	return nIndex >= 0 && nIndex < GetCount() ? m_Entries[static_cast<size_t>( nIndex )].get() : nullptr;
}

bool KeyValues::IsSubTree() const
{
	return !m_bHasValue;
}

const char *KeyValues::GetValue() const
{
	return m_Value.c_str();
}
