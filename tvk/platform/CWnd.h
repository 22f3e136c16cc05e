#pragma once

/// A window of the application. The library passes pointers to it through and never defines it.
class CWnd;
