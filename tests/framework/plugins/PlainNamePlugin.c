/* A module that exports the factory procedure under its plain name alone: C has
   no other. */
void* GetSSOClientFactory(void);
void* GetSSOClientFactory(void) { return 0; }
