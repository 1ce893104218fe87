// The table of the units that infer, for who begins an analysis.
#pragma once

/// Tells the inference its units; needed once, before the first expression is inferred.
void InstallInferenceForms();
