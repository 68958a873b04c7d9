// All sub-tools of the console: from loading their modules to shutting them down.
#pragma once

#include <QCoreApplication>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

#include "hostservices.h"
#include "plugin.h"

class ITesselConnection;
class ITesselHost;
class KeyValues;

class CSubTools
{
	Q_DECLARE_TR_FUNCTIONS( CSubTools )

public:
	// A line for the user about a module that could not be loaded or started.
	using ReportFn = std::function<void( const QString &line )>;

	CSubTools( ITesselHost &host, ReportFn report );
	~CSubTools(); // as ShutDown
	CSubTools( const CSubTools & ) = delete;
	CSubTools &operator=( const CSubTools & ) = delete;

	// Every "lib*_subtool.so" of the folder, in the order of their names.
	static QStringList FindPlugins( const QString &folder );

	// Loads the files, connects all of them to the host, then initialises each and hands it the settings kept for it
	// (a sub-tree of `settings` by its interface name). What fails is reported and left out. A file that was loaded
	// already is skipped; of two modules with the same sub-tool the first one gives it. Call once.
	void Load( const QStringList &paths, const KeyValues &settings );

	// The sub-tools that run, in the order of loading.
	std::vector<const SubTool *> All() const;
	const SubTool *Find( const QString &title ) const; // without regard to case; null when there is none

	// Puts what every sub-tool wants kept into a sub-tree of `settings`.
	void SaveSettings( KeyValues &settings ) const;

	void ConnectionStateChanged( ITesselConnection *pConnection ) const;
	void ConnectionEnded( ITesselConnection *pConnection ) const;

	// Shuts every sub-tool down and disconnects it, the last module first. The connections must have ended. Nothing
	// happens the second time.
	void ShutDown();

private:
	bool IsLoaded( const QString &canonicalPath ) const;
	void LoadOne( const QString &path );
	void DropDuplicates( CPlugin &plugin );
	bool Connect( CPlugin &plugin );
	void Initialise( const CPlugin &plugin, SubTool &tool, const KeyValues &settings );
	template <typename Function>
	void ForEachRunning( Function function ) const;

	ITesselHost &m_Host;
	ReportFn m_Report;
	CHostServices m_Services;
	std::vector<std::unique_ptr<CPlugin>> m_Plugins;
};
