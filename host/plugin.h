// One module with sub-tools, loaded from a file.
#pragma once

#include <QCoreApplication>
#include <QLibrary>
#include <QString>

#include <memory>
#include <span>
#include <vector>

#include "tessel/factory.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/itesselsubtool.h"

class ISchemaSystem;

// How the console knows a sub-tool. A module does not list what it offers: its factory is asked for every known
// interface, and each one that it knows is a sub-tool of it.
struct KnownSubTool
{
	const char *m_pInterface; // "Tessel_SubTool_001_…"
	const char *m_pTitle;     // as menus show it and as --open takes it; its windows' titles begin with it
	const char *m_pIcon;      // a picture path
};

std::span<const KnownSubTool> KnownSubTools();

// A sub-tool inside its module.
struct SubTool
{
	KnownSubTool m_Known;
	IExternalTesselSubTool *m_pModule = nullptr;
	ITesselSubTool *m_pTool = nullptr;
	bool m_bInitialised = false;
};

// A module whose sub-tools were taken stays in memory until the process ends: the toolkit's caches (fonts, types) may
// hold texts and functions of it, and would be left with nothing.
class CPlugin
{
	Q_DECLARE_TR_FUNCTIONS( CPlugin )

public:
	// Loads the file and finds its sub-tools. On failure the result is null and error is one line that names the file
	// and what is wrong with it.
	static std::unique_ptr<CPlugin> Load(
		const QString &path, std::span<const KnownSubTool> knownSubTools, QString &error );
	~CPlugin();
	CPlugin( const CPlugin & ) = delete;
	CPlugin &operator=( const CPlugin & ) = delete;

	QString Path() const { return m_Library.fileName(); }
	std::vector<SubTool> &SubTools() { return m_SubTools; }

	// Hands the schema system to the module if it wants one. False when the module refused it.
	bool InstallSchemaBindings( const char *pName, ISchemaSystem *pSchemaSystem );

private:
	explicit CPlugin( const QString &path );
	bool FindSubTools( CreateInterfaceFn pFactory, std::span<const KnownSubTool> knownSubTools, QString &error );

	QLibrary m_Library;
	std::vector<SubTool> m_SubTools;
};
