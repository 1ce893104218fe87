// What generates each kind of expression.
#pragma once

/// Tells CGExpression the form of each kind, before anything is generated.
void CGSetForms();
