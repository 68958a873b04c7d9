#include "frame/schemabindings.h"

#include <cstring>

#include "keel0/platform.h"
#include "tessel/ischemasystem.h"

bool CSchemaRegistry::RegisterAll( ISchemaSystem &schemaSystem, CUtlString &failureReason ) const
{
	for ( int nPass = 0; nPass < PASSES; nPass++ )
	{
		if ( !RunPass( schemaSystem, nPass, failureReason ) )
			return false;
	}
	return true;
}

bool CSchemaRegistry::RunPass( ISchemaSystem &schemaSystem, int nPass, CUtlString &failureReason ) const
{
	for ( CSchemaRegistration *p = m_pHead; p; p = p->m_pNext )
		p->m_bDone = false;

	for ( int nRound = 0; nRound < ROUNDS; nRound++ )
	{
		CUtlString *pFailureReason = nRound == ROUNDS - 1 ? &failureReason : nullptr;
		bool bAllDone = true;
		for ( CSchemaRegistration *p = m_pHead; p; p = p->m_pNext )
		{
			if ( !p->m_bDone )
				p->m_bDone = p->m_pRegister( schemaSystem, nPass, pFailureReason );
			bAllDone = bAllDone && p->m_bDone;
		}
		if ( bAllDone )
			return true;
	}
	return false;
}

CSchemaRegistration::CSchemaRegistration( CSchemaRegistry &registry, RegisterSchemaFn pRegister )
	: m_pRegister( pRegister )
	, m_pNext( registry.m_pHead )
{
	registry.m_pHead = this;
}

bool CSchemaBindings::Install( const char *pName, ISchemaSystem *pSchemaSystem )
{
	if ( !pName || std::strcmp( pName, SCHEMA_SYSTEM_NAME ) != 0 )
		return false;
	if ( m_bInstalled )
		return true;
	m_pSchemaSystem = pSchemaSystem;
	return RegisterNow();
}

void CSchemaBindings::Keep( ISchemaSystem *pSchemaSystem )
{
	if ( !m_pSchemaSystem )
		m_pSchemaSystem = pSchemaSystem;
}

void CSchemaBindings::Forget( const ISchemaSystem *pSchemaSystem )
{
	if ( m_pSchemaSystem == pSchemaSystem )
		m_pSchemaSystem = nullptr;
}

bool CSchemaBindings::RegisterNow()
{
	if ( m_bInstalled )
		return true;
	if ( !m_pSchemaSystem )
		return false;
	CUtlString failureReason;
	if ( !m_Registry.RegisterAll( *m_pSchemaSystem, failureReason ) )
	{
		const char *pReason = failureReason.IsEmpty() ? "<no failure reason set>" : failureReason.Get();
		Plat_FatalErrorFunc( "FATAL ERROR: unable to register all schema data: %s\n", pReason );
		return false;
	}
	m_bInstalled = true;
	m_pSchemaSystem->BindingsInstalled( MODULE_NAME );
	return true;
}

int CSchemaInstallCallback::OnPostConnect()
{
	ISchemaSystem *pSchemaSystem = m_Bindings.KeptSystem();
	if ( !pSchemaSystem || !pSchemaSystem->MayInstallBindings( CSchemaBindings::MODULE_NAME ) )
		return 1;
	return m_Bindings.RegisterNow() ? 0 : 1;
}
