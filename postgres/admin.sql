-- For the administrator of a database with profiles: psql --file=admin.sql tandry
--
-- Creates, or creates anew, the schema tandryadmin with what docs/postgresql.md describes. No profile needs it.

CREATE SCHEMA IF NOT EXISTS tandryadmin;
REVOKE ALL ON SCHEMA tandryadmin FROM PUBLIC;

-- Creates a profile that only its owner can read and write, and the auditor, if there is one, can read. Its tables come
-- when its owner first opens it.
CREATE OR REPLACE FUNCTION tandryadmin.create_profile(profile text, owner name, auditor name DEFAULT NULL)
RETURNS void LANGUAGE plpgsql SET search_path TO pg_catalog, pg_temp AS $$
DECLARE
    schema_name text := 'tandry_' || profile;
BEGIN
    IF profile !~ '^[a-z0-9_-]{1,56}$' THEN
        RAISE EXCEPTION 'a profile''s name has 1 to 56 characters, of a-z, 0-9, "_" and "-": %', profile;
    END IF;
    EXECUTE format('CREATE SCHEMA %I AUTHORIZATION %I', schema_name, owner);
    IF auditor IS NOT NULL THEN
        EXECUTE format('GRANT USAGE ON SCHEMA %I TO %I', schema_name, auditor);
        EXECUTE format('ALTER DEFAULT PRIVILEGES FOR ROLE %I IN SCHEMA %I GRANT SELECT ON TABLES TO %I',
                       owner, schema_name, auditor);
    END IF;
END
$$;

-- All profiles with their owners, versions and sizes. One that nobody has opened yet has no version.
CREATE OR REPLACE FUNCTION tandryadmin.profiles()
RETURNS TABLE (profile text, owner name, version integer, bytes bigint)
LANGUAGE plpgsql SET search_path TO pg_catalog, pg_temp AS $$
DECLARE
    found record;
BEGIN
    FOR found IN
        SELECT n.oid, nspname, pg_get_userbyid(nspowner) AS owner_name FROM pg_namespace n
        WHERE nspname LIKE 'tandry\_%' ORDER BY nspname
    LOOP
        profile := substr(found.nspname, 8);
        owner := found.owner_name;
        version := NULL;
        IF EXISTS (SELECT 1 FROM pg_class WHERE relnamespace = found.oid AND relname = 'tandry_version'
                   AND relkind = 'r') THEN
            EXECUTE format('SELECT version FROM %I.tandry_version', found.nspname) INTO version;
        END IF;
        SELECT coalesce(sum(pg_total_relation_size(c.oid)), 0) INTO bytes FROM pg_class c
        WHERE relnamespace = found.oid AND relkind = 'r';
        RETURN NEXT;
    END LOOP;
END
$$;

-- What makes the next version of a profile out of one, a row for each version but the last. A row never changes once
-- it was published. There is one version so far.
CREATE TABLE IF NOT EXISTS tandryadmin.upgrades (from_version integer PRIMARY KEY, statements text NOT NULL);

-- Upgrades all profiles of an older version, each completely or not at all, and tells of each profile what became of
-- it. No client writes to a profile meanwhile. The statements run with the rights of the profile's owner.
CREATE OR REPLACE FUNCTION tandryadmin.upgrade_profiles()
RETURNS TABLE (profile text, owner name, version integer, bytes bigint, outcome text)
LANGUAGE plpgsql SET search_path TO pg_catalog, pg_temp AS $$
DECLARE
    newest integer := 1 + (SELECT count(*) FROM tandryadmin.upgrades);
    administrator name := current_user;
    found record;
    step text;
BEGIN
    FOR found IN SELECT * FROM tandryadmin.profiles() LOOP
        profile := found.profile;
        owner := found.owner;
        version := found.version;
        bytes := found.bytes;
        IF version IS NULL THEN
            outcome := 'not opened yet';
        ELSIF version > newest THEN
            outcome := 'refused: a newer version than ' || newest;
        ELSIF version = newest THEN
            outcome := 'up to date';
        ELSE
            BEGIN
                -- The lock that writers hold until they commit: its keys are signed.
                PERFORM pg_advisory_xact_lock(1414415449, (n.oid::bigint - CASE WHEN n.oid::bigint > 2147483647
                                                           THEN 4294967296 ELSE 0 END)::integer)
                FROM pg_namespace n WHERE nspname = 'tandry_' || profile;
                FOR step IN SELECT statements FROM tandryadmin.upgrades u
                            WHERE u.from_version >= found.version ORDER BY u.from_version
                LOOP
                    EXECUTE format('SET LOCAL ROLE %I', owner);
                    PERFORM set_config('search_path', format('%I, pg_temp', 'tandry_' || profile), true);
                    EXECUTE step;
                    EXECUTE format('UPDATE %I.tandry_version SET version = version + 1', 'tandry_' || profile);
                    PERFORM set_config('search_path', 'pg_catalog, pg_temp', true);
                    EXECUTE format('SET LOCAL ROLE %I', administrator);
                END LOOP;
                version := newest;
                outcome := 'upgraded from version ' || found.version;
            EXCEPTION WHEN OTHERS THEN
                outcome := 'failed: ' || SQLERRM;
            END;
        END IF;
        RETURN NEXT;
    END LOOP;
END
$$;

REVOKE ALL ON FUNCTION tandryadmin.create_profile, tandryadmin.profiles, tandryadmin.upgrade_profiles FROM PUBLIC;
