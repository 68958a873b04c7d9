// What the console remembers between runs.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "keel0/keyvalues.h"
#include "style.h"

// A text file of key values:
//
//	"Tessel"
//	{
//		"style"		"dark"
//		"recent_addresses"	{ "0" "127.0.0.1:27190" … }
//		"main_window"	{ "geometry" "base64" "state" "base64" and the hash of each }
//		"sub_tools"	{ "Tessel_SubTool_001_…" { … } }
//	}
//
// Keys that this version does not know stay as they are.
class CHostSettings
{
public:
	// The file in the user's configuration folder.
	static QString DefaultPath();

	// A missing file gives the defaults. One that cannot be read is kept aside under another name and reported (through
	// Warning); where even that fails nothing is ever saved to the path. The window's place and layout are dropped,
	// with one Warning, where they are not what was saved: the toolkit would believe them.
	explicit CHostSettings( const QString &path );

	const QString &Path() const { return m_Path; }

	// Writes the file whole or not at all, making its folder where needed. False, after a Warning, when it could not.
	bool Save();

	StyleChoice Style() const; // System when nothing valid is kept
	void SetStyle( StyleChoice choice );

	QStringList RecentAddresses() const; // the newest first; what is no address is left out
	void SetRecentAddresses( const QStringList &addresses );

	// Empty when nothing is kept.
	QByteArray WindowGeometry() const;
	QByteArray WindowState() const;
	void SetWindow( const QByteArray &geometry, const QByteArray &state );

	// The tree that holds one sub-tree for each sub-tool.
	KeyValues &SubTools();

private:
	QByteArray ReadWindowKey( const char *pKey ) const;
	void DropDamagedWindowValues();

	QString m_Path;
	KeyValues m_Root;
	bool m_bMaySave = true;
};
