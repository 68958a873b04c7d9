// A host with the sub-tool, one connected engine and its open window.
#pragma once

#include <QPointer>
#include <QString>
#include <QTemporaryDir>
#include <memory>

#include "frame/fakeservices.h"
#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "keel0/keyvalues.h"
#include "showbudget/budgetwidget.h"
#include "support/countingallocator.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

// Recordings that are there for the whole test.
struct SceneFiles
{
	static constexpr int LONG_FRAMES = 1000;

	SceneFiles();

	QTemporaryDir m_Folder;
	QString m_Short;   // 3 frames
	QString m_Long;    // LONG_FRAMES frames, which take several progress steps to decode
	QString m_Damaged; // the long one with something behind it that cannot be read
};

// Everything is as a host has it: the sub-tool is connected and initialised, and its window has been shown and painted.
class CToolScene
{
public:
	static constexpr uint32_t SAMPLES = 20; // that the window has at first

	explicit CToolScene( const SceneFiles &files );
	~CToolScene() { ShutDown(); }

	// The window's parts, null when the window has gone.
	CQBudgetWidget *Window() const { return m_pWindow; }
	template <typename T>
	T *Find() const
	{
		return m_pWindow ? m_pWindow->findChild<T *>() : nullptr;
	}

	bool IsConnected() const { return !m_bConnectionEnded && m_Connection.m_nState == CFakeConnection::CONNECTED; }

	// What the engine sends; nothing when there is no window or no connection to receive it.
	void SendCategories();
	void SendSample();
	void SendScopes( uint64_t nFirst, uint64_t nCount ); // ids from nFirst on, each with its name

	// What the host does.
	void SetState( int nState );
	void EndConnection(); // and touches it no more
	void ShutDown();      // shuts the sub-tool down and disconnects it; the host takes no call from then on

	// Does what a user does next with whatever is left, and checks that it works. A popup may be open where the
	// application quit.
	void CheckUsable();

	const SceneFiles &m_Files;
	CCountingAllocator m_Allocator;
	CFakeServices m_Services;
	CFakeConnection m_Connection;
	CFakeHost m_Host{ &m_Connection };
	ServiceConnection m_Rows[2] = { { CModuleFrame::POST_CONNECT_NAME }, { CSchemaBindings::SCHEMA_SYSTEM_NAME } };
	CSchemaRegistry m_Registry;
	CModuleFrame m_Frame{ CServiceConnections( m_Rows ), m_Registry };
	CShowBudgetTool m_Tool{ m_Frame };

private:
	void Deliver( uint32_t nType, std::span<const uint8_t> payload );
	void CheckLiveData();
	void CheckPlayer();

	QPointer<CQBudgetWidget> m_pWindow;
	bool m_bConnectionEnded = false;
	bool m_bShutDown = false;
};
