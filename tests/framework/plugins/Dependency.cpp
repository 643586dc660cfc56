// What DependentPlugin needs; tests leave it out.
void UseDependency();
void UseDependency() {}
