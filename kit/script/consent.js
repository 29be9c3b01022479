// The viewer's consent in a page: the functions of three standards. They hand over the strings that the host has
// supplied, and answer callback(null, false) to what the strings alone do not tell.
//
//   __tcfapi   IAB Europe TCF v2, "Consent Management Platform API": ping, getTCData, addEventListener,
//              removeEventListener
//   __uspapi   IAB "CCPA Compliance Framework, US Privacy User Signal API" v1: getUSPData
//   __gpp      IAB Tech Lab "Global Privacy Platform: CMP API" v1.1: ping, addEventListener, removeEventListener
//
// A function that the page has defined itself remains.
(() => {
    'use strict';

    const { defineProperty, freeze, hasOwn } = Object;
    const { Promise, setTimeout } = window;
    const { apply } = Reflect;
    const { then } = Promise.prototype;
    const player = window.qoroPlayer;
    if (!player || typeof player.getConsent !== 'function')
        return;
    const getConsent = player.getConsent;

    // An exception of a page's function is reported as an uncaught error.
    function call(callback, args) {
        try {
            apply(callback, undefined, args);
        } catch (thrown) {
            setTimeout(() => { throw thrown; });
        }
    }

    // Calls a function with the strings; an own 'constructor' shadows the page's, which then() would use.
    function ask(use) {
        const none = { __proto__: null, tcf: null, gdprApplies: null, usPrivacy: null, gpp: null, gppSections: [] };
        const promise = getConsent();
        defineProperty(promise, 'constructor', { __proto__: null, value: undefined });
        apply(then, promise, [consent => use(consent || none), () => use(none)]);
    }

    // Unknown values are undefined, as in the standards.
    const known = value => value === null ? undefined : value;
    let listeners = 0;
    const listening = { __proto__: null };

    // Whether a listener of this function was registered and is now removed.
    function remove(name, id) {
        if (typeof id !== 'number' || !listening[`${name}${id}`])
            return false;
        delete listening[`${name}${id}`];
        return true;
    }

    function add(name) {
        listening[`${name}${++listeners}`] = true;
        return listeners;
    }

    // ------------------------------------------------------------------------------------------------------------ TCF

    function tcfPing(consent) {
        return {
            gdprApplies: known(consent.gdprApplies), cmpLoaded: true, cmpStatus: 'loaded', displayStatus: 'disabled',
            apiVersion: '2',
        };
    }

    // Purposes and vendors are in the string. Without one, only "the GDPR does not apply" is an answer.
    function tcData(consent, listenerId) {
        if (consent.tcf === null && consent.gdprApplies !== false)
            return null;
        return {
            tcString: known(consent.tcf), gdprApplies: known(consent.gdprApplies), eventStatus: 'tcloaded',
            cmpStatus: 'loaded', listenerId,
        };
    }

    function tcfapi(command, version, callback, parameter) {
        if (typeof callback !== 'function')
            return;
        const latest = version === 2 || version === 0 || version === null || version === undefined;
        ask(consent => {
            if (latest && command === 'ping') {
                call(callback, [tcfPing(consent), true]);
            } else if (latest && command === 'removeEventListener') {
                call(callback, [remove('tcf', parameter)]);
            } else if (latest && (command === 'getTCData' || command === 'addEventListener')) {
                const data = tcData(consent, command === 'addEventListener' ? add('tcf') : undefined);
                call(callback, [data, data !== null]);
            } else {
                call(callback, [null, false]);
            }
        });
    }

    // ----------------------------------------------------------------------------------------------------- US privacy

    function uspapi(command, version, callback) {
        if (typeof callback !== 'function')
            return;
        ask(consent => {
            if (command === 'getUSPData' && version === 1 && consent.usPrivacy !== null)
                call(callback, [{ version: 1, uspString: consent.usPrivacy }, true]);
            else
                call(callback, [null, false]);
        });
    }

    // ------------------------------------------------------------------------------------------------------------ GPP

    function gppPing(consent) {
        return {
            gppVersion: '1.1', cmpStatus: 'loaded', cmpDisplayStatus: 'disabled', signalStatus: 'ready',
            supportedAPIs: [], cmpId: 0, sectionList: [], applicableSections: consent.gppSections,
            gppString: consent.gpp, parsedSections: {},
        };
    }

    function gpp(command, callback, parameter) {
        if (typeof callback !== 'function')
            return;
        ask(consent => {
            if (consent.gpp === null) {
                call(callback, [null, false]);
            } else if (command === 'ping') {
                call(callback, [gppPing(consent), true]);
            } else if (command === 'addEventListener') {
                call(callback, [{
                    eventName: 'listenerRegistered', listenerId: add('gpp'), data: true, pingData: gppPing(consent),
                }, true]);
            } else if (command === 'removeEventListener') {
                const removed = remove('gpp', parameter);
                call(callback, [{
                    eventName: 'listenerRemoved', listenerId: parameter, data: removed, pingData: gppPing(consent),
                }, removed]);
            } else {
                call(callback, [null, false]);
            }
        });
    }

    const give = (name, value) => {
        if (!hasOwn(window, name))
            defineProperty(window, name,
                { __proto__: null, value: freeze(value), enumerable: true, configurable: true, writable: true });
    };
    give('__tcfapi', tcfapi);
    give('__uspapi', uspapi);
    give('__gpp', gpp);
})();
