// A tree of named values that is kept as text: the settings of the host and its sub-tools.
//
// Text form: a name and either a value or a block of further entries in braces; one such entry is the whole text. Names
// and values are written in double quotes; on reading, one without blanks, quotes and braces may stand bare. Inside
// quotes \" \\ \n \r \t and \xHH are escapes, and a quoted text ends on the line on which it began. "//" between words
// starts a comment that runs to the end of its line; inside a bare word it is part of the word. The byte 0 cannot
// occur, and no name may stand twice in a block. A UTF-8 byte order mark in front is skipped.
//
//	"Tessel"
//	{
//		"style"		"dark"
//		"recent"
//		{
//			"0"		"127.0.0.1:27190"
//		}
//	}
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keel0/api.h"

// Keys are compared byte for byte, without regard to the case of ASCII letters, and keep the order and the spelling of
// their first use. A key is one step of the tree: '/' has no meaning in it.
class KEEL0_API KeyValues
{
public:
	// Where and why a text could not be read. Lines and columns count from 1; a column counts bytes.
	struct ParseError
	{
		uint32_t m_nLine = 0;
		uint32_t m_nColumn = 0;
		std::string m_Message;
	};

	enum class LoadResult
	{
		Loaded,
		NoFile,    // there is no such file; the tree is unchanged
		Unreadable // it could not be read or parsed; the tree is unchanged and pError says why (line 0: not the text)
	};

	explicit KeyValues( const char *pName );
	~KeyValues();
	KeyValues( const KeyValues & ) = delete;
	KeyValues &operator=( const KeyValues & ) = delete;

	const char *GetName() const;

	// The value of a key of this tree. A text is converted as strtol (base 10, clamped to the int range) and strtof
	// do; one that is no number at all, a sub-tree and a missing key give the default. Numbers are written and read
	// with '.' whatever the locale, and a float survives SetFloat, text and GetFloat unchanged.
	int GetInt( const char *pKey, int nDefault = 0 ) const;
	float GetFloat( const char *pKey, float flDefault = 0.0f ) const;

	// The text is valid until the key is set again or the tree ends.
	const char *GetString( const char *pKey, const char *pDefault = "" ) const;

	// Sets the value of a key, adding it at the end when it is missing and replacing a sub-tree of that name.
	void SetInt( const char *pKey, int nValue );
	void SetFloat( const char *pKey, float flValue );
	void SetString( const char *pKey, const char *pValue ); // null is the empty text

	// The whole tree anew, name included; the caller deletes it.
	KeyValues *MakeCopy() const;

	// The entry (value or sub-tree) of that name directly below this one, or null. bCreate adds an empty sub-tree.
	KeyValues *FindKey( const char *pKey, bool bCreate = false );
	const KeyValues *FindKey( const char *pKey ) const;
	bool RemoveKey( const char *pKey ); // false when there is none

	// Takes pSubTree (made with new, not null, not null-named) over, in place of an entry of the same name. Returns it.
	KeyValues *AddSubTree( KeyValues *pSubTree );

	// Entries in order.
	int GetCount() const;
	KeyValues *GetEntry( int nIndex ); // null when out of range
	const KeyValues *GetEntry( int nIndex ) const;
	bool IsSubTree() const;       // has entries, or was made as a tree and never got a value
	const char *GetValue() const; // of an entry that is no sub-tree; else ""

	static constexpr int MAX_LEVELS = 64; // blocks inside one another
	static constexpr size_t MAX_TEXT_SIZE = size_t{ 64 } << 20;
	static constexpr int MAX_ENTRIES = 500'000; // of all levels; one takes fifty times the memory of its shortest text

	// Reads a text of the form above into this tree, replacing name and content. On an error the tree is unchanged, the
	// result is false and *pError (may be null) says where (line 0: the text is longer than MAX_TEXT_SIZE).
	bool LoadFromBuffer( std::string_view text, ParseError *pError = nullptr );

	// A tree of more than MAX_LEVELS levels or MAX_ENTRIES entries gives a text that cannot be read back; SaveToFile
	// refuses it.
	std::string SaveToBuffer() const;

	LoadResult LoadFromFile( const char *pPath, ParseError *pError = nullptr );

	// Writes to a new file beside pPath and renames it over pPath, so that a reader and a crash see the old or the new
	// text whole. The mode of an old file is kept, and a link leads to the file that is replaced. False (and
	// pError->m_Message) when that failed; the old file is then unchanged.
	bool SaveToFile( const char *pPath, ParseError *pError = nullptr ) const;

	// For settings: loads pPath, and when the file is there but broken, reports it through Warning with line and
	// column, renames it to a free name "pPath.broken-N" (N = 1, 2, …), and returns Unreadable: what the user had is
	// kept and a later SaveToFile does not overwrite it. *pKeptAs is the new name, else empty. If even the renaming
	// fails, the warning and pError say so and the caller must not save there.
	LoadResult LoadSettingsFile( const char *pPath, ParseError *pError = nullptr, std::string *pKeptAs = nullptr );

private:
	friend class CKeyValuesReader;

	KeyValues &ValueEntry( const char *pKey );

	std::string m_Name;
	std::string m_Value;
	bool m_bHasValue = false;
	std::vector<std::unique_ptr<KeyValues>> m_Entries;
};
