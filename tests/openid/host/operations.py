"""What each operation answers through the library, by the host's command.

Each row: the command, its answer with nobody signed in, and with Alice signed in. A function is
asked whether the answer is right. SAME: as with nobody signed in.
"""

import json

SAME = object()
ISSUER = "https://localhost:"
CLIENT = "hxsso-test"
SCOPES = "data:read data:write email offline_access openid profile"


def path_of(*names):
    return lambda answer: answer.replace("\\", "/").rpartition("/")[2].endswith(names)


def claims(answer):
    told = json.loads(answer)
    return (told["sub"], told["name"], told["email"]) == ("alice", "Alice Ågren",
                                                          "alice@example.org")


def a_token(answer):
    return answer.count(".") == 2


def future(answer):
    return 1_700_000_000 < answer < 4_000_000_000


def url(path):
    return lambda answer: answer.startswith(ISSUER) and answer.endswith(path)


def configuration(**members):
    return lambda answer: {name: json.loads(answer)[name] for name in members} == members


def with_members(*names):
    return lambda answer: set(names) <= set(json.loads(answer))


OPERATIONS = [
    # WebServicesManager: configuration, cache, entitlement
    ("IsInitialized", True, SAME),
    ("IsLogEnabled", True, SAME),
    ("SetSupportFileSearchPaths /one;/two", None, SAME),
    ("GetSupportFileSearchPaths", "/one;/two", SAME),
    ("GetConfiguration", configuration(server=0, consumerKey=CLIENT, oauth2ConsumerKey=CLIENT,
                                       oauth2Scope=SCOPES, consumerSecret=""), SAME),
    ('SetConfiguration {"server": 5}', False, SAME),
    ("GetCachePath", path_of("store"), SAME),
    ("IsCacheEnabled 0", True, SAME),
    ("EnableCache 0 false", None, SAME),
    ("IsCacheAvailable 0", False, True),
    ("InvalidateCache 0", None, SAME),
    ("GetServiceEntitlement x", 0, SAME),
    ("GetServiceEntitlementEx", False, SAME),
    # the user
    ("GetLoginStateFile", path_of(".dat"), SAME),
    ("GetUserNameW", "", "Alice Ågren"),
    ("GetUserNameW.cut", "", "A"),
    ("GetLoginUserName", "", "alice"),
    ("GetUserId", "", "alice"),
    ("GetUserEmail", "", "alice@example.org"),
    ("GetUserFirstName", "", "Alice"),
    ("GetUserLastName", "", "Ågren"),
    ("GetUserInfo", False, claims),
    ("IsLoggedIn", False, True),
    ("GetLoginExpiryDate", 0, SAME),
    ("IsLoginExpired", False, SAME),
    ("IsLoginValid", False, True),
    ("IsSSOEnabledForAllUsers", False, SAME),
    ("GetLdapDomainKey", "", SAME),
    ("GetCloudStorageQuota", False, SAME),
    # signing in
    ("InitiateLogin.null", False, SAME),
    ("InitiateLogin 0", {"result": False, "text": None}, SAME),
    ("InitiateLogin 20", {"result": False, "text": ""}, SAME),
    ("InitiateLogin.error 20", {"result": False, "text": "", "error": 2, "value": 404}, SAME),
    ("InitiateLogin.number 20 bob", {"result": False, "text": "", "error": 2, "value": 404}, SAME),
    ("InitiateLogin.device 20", {"result": False, "text": "", "error": 2, "value": 404}, SAME),
    ("InitiateLogin.errorEx 20 bob", {"result": False, "text": "", "error": 7, "value": 404},
     SAME),
    ("CompleteLogin", False, SAME),
    ("CompleteLogin.jar", False, SAME),
    ("RestoreLogin", False, True),
    ("Private.RestoreLogin true", False, True),
    ("InitiateLogout 9", {"result": False, "text": "", "cookies": 0}, SAME),
    # tokens
    ("GetAccessToken", "", a_token),
    ("IsTokenAvailable", False, True),
    ("GetAccessToken.flag true", "", a_token),
    ("GetAccessToken.small", {"stored": 0, "text": ""}, SAME),
    ("GetTokenExpiryDate", 0, future),
    ("IsTokenExpired", False, SAME),
    ("RefreshToken true", False, True),
    ("GetLoginCookie", 0, SAME),
    ("SignRequest", None, SAME),
    ("SignUrlForBrowser", None, SAME),
    ("DisableOAuth2", True, SAME),
    ("IsOAuth2Enabled", False, SAME),
    ("GetOAuth2AccessToken 1 data:read", None, SAME),
    ("GetOAuth2AccessToken.buffer", "", SAME),
    ("RefreshOAuth2Token true", False, SAME),
    ("EnableOAuth2 true", True, SAME),
    ("GetOAuth2AccessToken.buffer", "", a_token),
    ("RefreshOAuth2Token.spec 1 data:read", False, True),
    ("GetOAuth2TokenExpiryDate.spec 1 data:read", 0, future),
    ("IsOAuth2TokenExpired.spec 1 data:read", False, SAME),
    ("IsOAuth2TokenAvailable.spec 1 data:read", False, True),
    ("GetOAuth2AccessToken 1 data:write data:read", None,
     lambda answer: a_token(answer["token"]) and
     (answer["type"], answer["scope"]) == (1, "data:read data:write")),
    ("GetOAuth2AccessToken 1 unknown:scope", None, SAME),
    ("EnableOAuth2.spec 1 data:read", True, SAME),
    ("IsOAuth2Enabled", True, SAME),
    ("RefreshOAuth2Token true", False, True),
    ("GetOAuth2TokenExpiryDate", 0, future),
    ("IsOAuth2TokenExpired", False, SAME),
    ("IsOAuth2TokenAvailable", False, True),
    # servers
    ("GetServer", 0, SAME),
    ("SetServer 7", False, SAME),
    ("SetServer 0", True, SAME),
    ("GetUrl 0", url("/authorize"), SAME),
    ("GetUrl 1", url("/end-session"), SAME),
    ("GetUrl 2", "https://localhost/account", SAME),
    ("GetUrl 3", url("/token"), SAME),
    ("GetUrl 4", url("/userinfo"), SAME),
    ("GetUrl 5", url("/revoke"), SAME),
    ("GetUrl 6", url("/device"), SAME),
    ("GetUrl 7", url("/jwks"), SAME),
    ("GetUrl 8", url(""), SAME),
    ("GetUrl 9", "", SAME),
    ("GetUrl -1", "", SAME),
    ("Private.GetUrl token", url("/token"), SAME),
    ("Private.GetUrl nothing", "", SAME),
    ("Private.GetUrl.code 3", url("/token"), SAME),
    ("Private.SetUrlOverrides 0 token https://other.example/", False, SAME),
    ("Private.SetUrlOverrides 0 userinfo http://other.example/", False, SAME),
    ("Private.SetUrlOverrides 7 account https://other.example/", False, SAME),
    ("Private.SetUrlOverrides 0 account https://other.example/", True, SAME),
    ("Private.GetUrlOverrides 0", {"account": "https://other.example/"}, SAME),
    ("Private.GetUrl account", "https://other.example/", SAME),
    ("Private.ClearUrlOverrides 0", True, SAME),
    ("Private.GetUrlOverrides 0", {}, SAME),
    ("Private.ServerToServerName 0", "production", SAME),
    ("Private.ServerToServerName 7", "", SAME),
    ("Private.ServerNameToServer production", 0, SAME),
    ("Private.ServerNameToServer none", -1, SAME),
    # proxies
    ("GetProxyAuthenticationDialogText", False, SAME),
    ("SetProxyAuthenticationDialogText", None, SAME),
    ("HasProxyInfo", False, SAME),
    ("HasProxyAuthentication proxy.example 3128", False, SAME),
    ("GetProxyAuthentication proxy.example 3128", None, SAME),
    ("SetProxyAuthentication proxy.example 3128 anna se cret", True, SAME),
    ("HasProxyInfo", True, SAME),
    ("HasProxyAuthentication proxy.example 3128", True, SAME),
    ("HasProxyAuthentication other.example 3128", False, SAME),
    ("GetProxyAuthentication proxy.example 3128", {"user": "anna", "password": "se cret"}, SAME),
    ("ClearProxyInfo", True, SAME),
    ("HasProxyInfo", False, SAME),
    # events
    ("AddObserver", None, SAME),
    ("RemoveObserver", None, SAME),
    ("Private.ClearEventQueue", None, SAME),
    ("HasEvent", False, SAME),
    ("DispatchEvent", False, SAME),
    ("Private.RaiseEvent 9 false", None, SAME),
    ("HasEvent", True, SAME),
    ("DispatchEvent", True, SAME),
    ("HasEvent", False, SAME),
    # WebServicesUIManager, WebServicesAutomation
    ("UI.IsInitialized", True, SAME),
    ("UI.GetCurrentLocale", "", SAME),
    ("UI.SetHostApplicationWindow 77", None, SAME),
    ("UI.GetHostApplicationWindow", 77, SAME),
    ("UI.IsLoginInProgress", False, SAME),
    ("UI.IsLoggedIn", False, True),
    ("UI.IsLoginValid", False, True),
    ("UI.AddObserver", None, SAME),
    ("UI.RemoveObserver", None, SAME),
    ("Automation.Login alice wonderland", False, SAME),
    ("Automation.Login.text alice wonderland",
     {"result": False, "text": "Sign in with the browser: a password is not taken here."}, SAME),
    # SSOClientPrivate
    ("Private.GetLoginInfo", "", claims),
    ("Private.GetSessionState", with_members("server", "loggedIn"), SAME),
    ("Private.Ping", {"result": True, "plugin": "HxSSOOpenID", "server": "production"}, SAME),
    ("Private.GetSettingsPath", path_of("HxSSOOpenID.json"), SAME),
    ("Private.GetLoginStateFile", path_of(".dat"), SAME),
    ("Private.GetLoginStateCacheFile 0", path_of(".dat"), SAME),
    ("Private.GetLoginStateCacheFile.flag 7", "", SAME),
    ("Private.LockLoginStateFile", None, SAME),
    ("Private.UnlockLoginStateFile", None, SAME),
    ("Private.UnlockLoginStateFile", None, SAME),
    ("Private.GetCurrentConfigurationConsumerKey", {"key": CLIENT, "secret": ""}, SAME),
    ('Private.ToJsonString {"server": 3, "consumerKey": "ä", "oauth2Scope": "x"}',
     configuration(server=3, consumerKey="ä", oauth2Scope="x", featureName=""), SAME),
    ("Private.ToJsonString.null", "", SAME),
    ("Private.FromJsonString []", False, SAME),
    ("Private.FromJsonString {}", True, SAME),
    ('Private.Equals {"consumerSecret":"a"} {"consumerSecret":"a"}', True, SAME),
    ('Private.Equals {"consumerSecret":"a"} {"consumerSecret":"b"}', False, SAME),
    ("Private.GetActiveOAuth2TokenRefreshRetrySchedule", "none", SAME),
    ("Private.SetOAuth2TokenRefreshRetrySchedule", False, SAME),
    ("Private.GetProductName", "HxSSO OpenID", SAME),
    ("Private.SetProductName Tool", None, SAME),
    ("Private.GetProductName", "Tool", SAME),
    ("Private.SetProductName HxSSO OpenID", None, SAME),
    # the server process
    ("Private.FreezeSSOServerProcess", False, SAME),
    ("Private.GetKillFrozenServerTimeout", 0, SAME),
    ("Private.SetKillFrozenServerTimeout 9", False, SAME),
    ("Private.StartSSOServerProcess", False, SAME),
    ("Private.GetSSOServerProcessArguments", False, SAME),
    ("Private.SetSSOServerProcessArguments", None, SAME),
    ("Private.GetSSOServerName", "Halvorix.SSO.DefaultServer-v2", SAME),
    ("Private.GetSSOEventServerName", 0, SAME),
    ("Server.GetSSOServerAppFile", path_of("server", "HxSSO.exe"), SAME),
    ("Server.GetSSOServerAppExeFile", path_of("HxSSO.exe"), SAME),
    ("Server.StartSSOServerProcess", False, SAME),
    ("Server.IsSSOServerProcessRunning", False, SAME),
    ("Server.IsSSOServerProcessReady", False, SAME),
    ("Server.QuitSSOServerProcess", False, SAME),
    ("Server.QuitAllSSOServerProcesses", False, SAME),
    ("Services.SetRsaCryptor", True, SAME),
]

# Those that have tests of their own: they open the browser, end the login or the process's use.
ELSEWHERE = {
    "Initialize", "Initialize.spec", "Uninitialize", "UI.Initialize", "UI.Uninitialize",
    "UI.Login", "UI.Login.text", "UI.Logout", "UI.ShowAccountSettings", "Logout",
    "CompleteLogout", "GetConfiguration.kept", "Private.Encrypt",
}
