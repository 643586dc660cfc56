// An OpenID Connect provider for tests: oidc-provider with all in memory, one public native
// client and two users. Its settings are JSON, the only argument:
//
//     modules   the folder in which npm put node_modules
//     certificate, key   files, for localhost
//     lifetime  of access tokens, in seconds
//
// Prints a line of JSON with its address, and ends with its standard input. A line there removes
// the account that it names.

import { generateKeyPairSync, randomBytes } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { createServer } from 'node:https';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { pathToFileURL } from 'node:url';

const settings = JSON.parse(process.argv[2]);
const library = join(settings.modules, 'node_modules/oidc-provider/lib/index.js');
const { default: Provider } = await import(pathToFileURL(library));

const CLIENT = 'hxsso-test';
const API = 'https://api.example';
const USERS = {
    alice: { password: 'wonderland', name: 'Alice Ågren', email: 'alice@example.org' },
    bob: { password: 'builder', name: 'Bob', email: 'bob@example.org' },
};

function signingKey(id, algorithm, type, options) {
    const { privateKey } = generateKeyPairSync(type, options);
    return { ...privateKey.export({ format: 'jwk' }), kid: id, alg: algorithm, use: 'sig' };
}

const configuration = {
    clients: [{
        client_id: CLIENT,
        application_type: 'native', // any loopback port
        token_endpoint_auth_method: 'none',
        redirect_uris: ['http://127.0.0.1/callback'],
        post_logout_redirect_uris: ['http://127.0.0.1/callback'],
        grant_types: [
            'authorization_code', 'refresh_token', 'urn:ietf:params:oauth:grant-type:device_code',
        ],
        response_types: ['code'],
    }],
    scopes: ['openid', 'offline_access'],
    claims: {
        openid: ['sub'],
        profile: ['name', 'preferred_username'],
        email: ['email', 'email_verified'],
    },
    conformIdTokenClaims: true, // the user's claims come from userinfo
    jwks: {
        keys: [
            signingKey('first', 'RS256', 'rsa', { modulusLength: 2048 }),
            signingKey('second', 'ES256', 'ec', { namedCurve: 'P-256' }),
        ],
    },
    cookies: { keys: [randomBytes(32).toString('hex')] },
    pkce: { required: () => true, methods: ['S256'] },
    ttl: {
        AccessToken: settings.lifetime,
        AuthorizationCode: 60,
        DeviceCode: 60,
        Grant: 86400,
        IdToken: 3600,
        Interaction: 600,
        RefreshToken: 86400,
        Session: 86400,
    },
    // A native application gets them without asking for offline_access, each good once.
    issueRefreshToken: async (_context, client) => client.grantTypeAllowed('refresh_token'),
    rotateRefreshToken: true,
    features: {
        devInteractions: { enabled: false },
        deviceFlow: { enabled: true },
        revocation: { enabled: true },
        rpInitiatedLogout: { enabled: true },
        // Tokens for a service of its own are signed, so that a demonstration can show them.
        resourceIndicators: {
            enabled: true,
            defaultResource: () => API,
            getResourceServerInfo: () => ({
                scope: 'user:profile data:read data:write',
                audience: API,
                accessTokenFormat: 'jwt',
                accessTokenTTL: settings.lifetime,
            }),
        },
    },
    interactions: { url: (_context, interaction) => `/interaction/${interaction.uid}` },
    findAccount: (_context, id) => Object.hasOwn(USERS, id) && {
        accountId: id,
        claims: () => ({
            sub: id,
            name: USERS[id].name,
            preferred_username: id,
            email: USERS[id].email,
            email_verified: true,
        }),
    },
};

function page(response, title, form) {
    response.writeHead(200, { 'Content-Type': 'text/html; charset=utf-8' });
    response.end(`<!DOCTYPE html><title>${title}</title><h1>${title}</h1>
<form method="post">${form}<button type="submit" autofocus>Continue</button></form>`);
}

async function formOf(request) {
    let text = '';
    for await (const part of request) text += part;
    return new URLSearchParams(text);
}

async function grantAll(provider, { params, prompt, session, grantId }) {
    const grant = (grantId && await provider.Grant.find(grantId))
        || new provider.Grant({ accountId: session.accountId, clientId: params.client_id });
    const { missingOIDCScope, missingOIDCClaims, missingResourceScopes } = prompt.details;
    if (missingOIDCScope) grant.addOIDCScope(missingOIDCScope.join(' '));
    if (missingOIDCClaims) grant.addOIDCClaims(missingOIDCClaims);
    for (const [resource, scopes] of Object.entries(missingResourceScopes ?? {})) {
        grant.addResourceScope(resource, scopes.join(' '));
    }
    return grant.save();
}

// The pages of sign-in and consent.
async function interact(provider, request, response) {
    const details = await provider.interactionDetails(request, response);
    const isLogin = details.prompt.name === 'login';
    if (request.method !== 'POST') {
        return isLogin
            ? page(response, 'Sign in', `<input name="login" aria-label="name">
<input name="password" type="password" aria-label="password">`)
            : page(response, 'Allow access', '');
    }
    if (!isLogin) {
        const consent = { grantId: await grantAll(provider, details) };
        return provider.interactionFinished(request, response, { consent },
            { mergeWithLastSubmission: true });
    }
    const form = await formOf(request);
    const name = form.get('login');
    if (!Object.hasOwn(USERS, name) || USERS[name].password !== form.get('password')) {
        response.writeHead(401, { 'Content-Type': 'text/plain' });
        return response.end('The name or the password is wrong.');
    }
    return provider.interactionFinished(request, response, { login: { accountId: name } });
}

const server = createServer({
    cert: readFileSync(settings.certificate),
    key: readFileSync(settings.key),
});
server.listen(0, '127.0.0.1', () => {
    const issuer = `https://localhost:${server.address().port}`;
    const provider = new Provider(issuer, configuration);
    const answer = provider.callback();
    server.on('request', (request, response) => {
        if (!request.url.startsWith('/interaction/')) return answer(request, response);
        return interact(provider, request, response).catch((error) => {
            response.writeHead(500, { 'Content-Type': 'text/plain' });
            response.end(String(error));
        });
    });
    provider.on('server_error', (_context, error) => console.error(error));
    console.log(JSON.stringify({ issuer, clientId: CLIENT }));
});
createInterface({ input: process.stdin })
    .on('line', (name) => console.log(JSON.stringify({ removed: delete USERS[name] })))
    .on('close', () => process.exit(0));
