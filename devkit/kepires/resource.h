// Numbers of the resources, for the program and the resource compiler. A dialog's buttons have the numbers of the
// platform, IDYES, IDNO and IDCANCEL ("later"), but for the countdown's: its Enter key presses nothing.
#pragma once

#define DIALOG_QUESTION 101
#define DIALOG_COUNT_DOWN 102
#define DIALOG_INSTALLATION 104

#define TEXT_QUESTION 1001 /* the question */
#define TEXT_TIME 1002     /* how long the dialog stays; hidden when it stays as long as it takes */
#define TEXT_NUMBER 1003   /* the number of -RebootMsg */
#define BUTTON_RESTART 1004
