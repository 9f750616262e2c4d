#pragma once

/// What the process has to end with.
int RunEightContexts();
