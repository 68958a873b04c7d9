// What a user reads in the Show Budget window. Its class is inside the module, so it is read through Qt alone.
#pragma once

#include <QString>

class QMainWindow;

QMainWindow *FindBudgetWindow();                     // null while there is none
QString BudgetWindowStatus( const QString &prefix ); // of the status bar label that begins so; empty when none does
int BudgetWindowSamples();                           // behind "Samples: "; 0 for "No Samples."
