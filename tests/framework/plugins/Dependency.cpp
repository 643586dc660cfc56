// What DependentPlugin needs; tests leave it out.
int DependencyOfPlugin();
int DependencyOfPlugin() { return 1; }
