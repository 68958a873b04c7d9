// Tells the host's schema system about the types that the module describes.
#pragma once

#include "keel0/utlstring.h"
#include "tessel/ipostconnectservice.h"

class CSchemaRegistration;
class ISchemaSystem;

// Registers part of the schema data in pass nPass (0 to 3) and returns whether it is done; what it depends on may have
// to come first, it is then called again. pFailureReason is null but on the last round, where a registrar that is still
// not done may say why.
using RegisterSchemaFn = bool ( * )( ISchemaSystem &schemaSystem, int nPass, CUtlString *pFailureReason );

// The registrations of the module, built by its static initialisation; constant-initialised like the interfaces' list.
class CSchemaRegistry
{
public:
	static constexpr int PASSES = 4;
	static constexpr int ROUNDS = 999; // in each pass

	constexpr CSchemaRegistry() = default;
	CSchemaRegistry( const CSchemaRegistry & ) = delete;
	CSchemaRegistry &operator=( const CSchemaRegistry & ) = delete;

	// False when a registrar was not done after the last round of a pass; the passes after it are then left out and
	// failureReason is what a registrar gave, or empty.
	bool RegisterAll( ISchemaSystem &schemaSystem, CUtlString &failureReason ) const;

private:
	friend class CSchemaRegistration;

	bool RunPass( ISchemaSystem &schemaSystem, int nPass, CUtlString &failureReason ) const;

	CSchemaRegistration *m_pHead = nullptr;
};

// Puts itself at the head of the registry. Must live as long as the registry is used.
class CSchemaRegistration
{
public:
	CSchemaRegistration( CSchemaRegistry &registry, RegisterSchemaFn pRegister );
	CSchemaRegistration( const CSchemaRegistration & ) = delete;
	CSchemaRegistration &operator=( const CSchemaRegistration & ) = delete;

private:
	friend class CSchemaRegistry;

	RegisterSchemaFn m_pRegister;
	CSchemaRegistration *m_pNext;
	bool m_bDone = false; // in the pass that runs
};

class CSchemaBindings
{
public:
	static constexpr char SCHEMA_SYSTEM_NAME[] = "SchemaSystem_001";
	static constexpr char MODULE_NAME[] = "kesto_subtool";

	explicit CSchemaBindings( const CSchemaRegistry &registry )
		: m_Registry( registry )
	{
	}

	// False, and nothing kept, unless pName is exactly SCHEMA_SYSTEM_NAME. True at once when installed; else keeps the
	// schema system and registers.
	bool Install( const char *pName, ISchemaSystem *pSchemaSystem );

	// Keeps a schema system for a later RegisterNow, unless one is kept already. Null changes nothing.
	void Keep( ISchemaSystem *pSchemaSystem );
	void Forget( const ISchemaSystem *pSchemaSystem ); // when it is the one that is kept

	// Registers with the schema system that was kept, unless that was done; tells it when all is installed. What cannot
	// be completed stops the process through Plat_FatalErrorFunc; the result is false when that returns.
	bool RegisterNow();

	ISchemaSystem *KeptSystem() const { return m_pSchemaSystem; }
	bool IsInstalled() const { return m_bInstalled; }

private:
	const CSchemaRegistry &m_Registry;
	ISchemaSystem *m_pSchemaSystem = nullptr;
	bool m_bInstalled = false;
};

// Installs the bindings once the host has connected all modules, for a schema system that was kept but got nothing yet.
class CSchemaInstallCallback final : public IPostConnectCallback
{
public:
	explicit CSchemaInstallCallback( CSchemaBindings &bindings )
		: m_Bindings( bindings )
	{
	}

	int OnPostConnect() override;

private:
	CSchemaBindings &m_Bindings;
};
